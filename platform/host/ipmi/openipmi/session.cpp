// SPDX-License-Identifier: Apache-2.0
#include "session.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <utility>

extern "C" {
#include <OpenIPMI/ipmi_auth.h>
#include <OpenIPMI/ipmi_err.h>
#include <OpenIPMI/ipmi_lan.h>
#include <OpenIPMI/ipmiif.h>
}

namespace pwrmgt::ipmi::openipmi {
namespace {

using namespace std::chrono_literals;

// Controllers forget a session that was silent for a minute.
constexpr auto kKeptIdle = 30s;
constexpr auto kClosing = 500ms;

ipmi_lanp_parm_t value(int id, int what) {
    return {id, what, nullptr, 0};
}
ipmi_lanp_parm_t text(int id, const std::string& what) {
    return {id, 0, const_cast<char*>(what.data()), static_cast<unsigned int>(what.size())};
}
ipmi_lanp_parm_t list(int id, char** what) {
    return {id, 0, what, 1};
}

// OpenIPMI sends a request up to seven times, and then makes an answer up. It shall not come to
// that before the exchange is given up.
int resend_after_us(std::chrono::milliseconds timeout) {
    const std::chrono::microseconds after = std::max<std::chrono::microseconds>(timeout / 6, 1s);
    return static_cast<int>(after.count());
}

int make_remote(const Target& target, const std::string& address, std::chrono::milliseconds timeout,
                ipmi_con_t** made) {
    char* addresses[] = {const_cast<char*>(address.c_str())};
    char* ports[] = {const_cast<char*>(target.port.c_str())};
    // RMCP+ only: the older log-ins show the password, or let traffic through unencrypted.
    std::array<ipmi_lanp_parm_t, 7> parameters{
        list(IPMI_LANP_PARMID_ADDRS, addresses),
        list(IPMI_LANP_PARMID_PORTS, ports),
        text(IPMI_LANP_PARMID_USERNAME, target.user),
        text(IPMI_LANP_PARMID_PASSWORD, target.password),
        value(IPMI_LANP_PARMID_AUTHTYPE, IPMI_AUTHTYPE_RMCP_PLUS),
        value(IPMI_LANP_PARMID_PRIVILEGE, IPMI_PRIVILEGE_ADMIN),
        value(IPMI_LANP_DEFAULT_TIMEOUT, resend_after_us(timeout)),
    };
    return ipmi_lanp_setup_con(parameters.data(), parameters.size(), system_handler(), nullptr,
                               made);
}

bool initialized() {
    static const bool done = ipmi_init(system_handler()) == 0;
    return done;
}

// Why a session did not come up.
Send failure_of(int error) {
    if (error == ETIMEDOUT) return Send::timed_out;
    if (error == IPMI_RMCPP_ERR_VAL(IPMI_RMCPP_INSUFFICIENT_RESOURCES_FOR_SESSION) ||
        error == IPMI_RMCPP_ERR_VAL(IPMI_RMCPP_INSUFFICIENT_RESOURCES_FOR_ROLE)) {
        return Send::out_of_resources;
    }
    return Send::refused;
}

void closed(ipmi_con_t*, void* done) {
    *static_cast<bool*>(done) = true;
}

}  // namespace

bool Session::stale() const {
    return Clock::now() - last_used_ > kKeptIdle;
}

void Session::changed(ipmi_con_t*, int error, unsigned int, int any_port_up, void* session) {
    auto& self = *static_cast<Session*>(session);
    self.state_ = any_port_up != 0 ? State::up : State::down;
    self.error_ = error;
}

Send Session::connect(const Target& target, const Deadline& deadline) {
    const auto address = address_of(target, deadline.until);
    if (!address) return Send::unreachable;
    const int error = make_remote(target, *address, deadline.timeout, &connection_);
    if (error != 0) {
        connection_ = nullptr;
        return error == ENOMEM ? Send::out_of_resources : Send::unreachable;
    }
    state_ = State::opening;
    connection_->add_con_change_handler(connection_, changed, this);
    if (connection_->start_con(connection_) != 0) return Send::unreachable;
    while (state_ == State::opening && Clock::now() < deadline.until)
        turn(deadline.until);
    if (state_ == State::opening) return Send::timed_out;
    return state_ == State::up ? Send::done : failure_of(error_);
}

Send Session::open(const Target& target, const Deadline& deadline) {
    if (!initialized()) return Send::out_of_resources;
    const Send result = connect(target, deadline);
    last_used_ = Clock::now();
    if (result != Send::done) close();
    return result;
}

int Session::answered(ipmi_con_t*, ipmi_msgi_t* item) {
    auto& self = *static_cast<Session*>(item->data1);
    // One that was given up is answered all the same, when the way is closed.
    if (std::bit_cast<std::uintptr_t>(item->data2) != self.exchange_ || self.response_ == nullptr) {
        return IPMI_MSG_ITEM_NOT_USED;
    }
    self.response_->bytes({item->msg.data, item->msg.data_len});
    self.response_ = nullptr;
    self.done_ = true;
    return IPMI_MSG_ITEM_NOT_USED;
}

Send Session::exchange(const Request& request, const Deadline& deadline, Response& response) {
    ipmi_msgi_t* const item = ipmi_alloc_msg_item();
    if (item == nullptr) return Send::out_of_resources;
    item->data1 = this;
    item->data2 = std::bit_cast<void*>(++exchange_);
    response_ = &response;
    done_ = false;

    ipmi_system_interface_addr controller{};
    controller.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    controller.channel = IPMI_BMC_CHANNEL;
    controller.lun = request.lun();
    const auto payload = request.payload();
    const ipmi_msg_t message{request.netfn(), request.command(),
                             static_cast<unsigned short>(payload.size()),
                             const_cast<unsigned char*>(payload.data())};
    if (connection_->send_command(connection_, reinterpret_cast<ipmi_addr_t*>(&controller),
                                  sizeof controller, &message, answered, item) != 0) {
        response_ = nullptr;
        ipmi_free_msg_item(item);
        return Send::no_answer;
    }
    while (!done_ && state_ == State::up && Clock::now() < deadline.until)
        turn(deadline.until);
    response_ = nullptr;
    last_used_ = Clock::now();
    if (done_) return response.length() > 0 ? Send::done : Send::no_answer;
    return state_ == State::up ? Send::timed_out : Send::no_answer;
}

void Session::close() {
    if (connection_ == nullptr) return;
    ipmi_con_t* const connection = std::exchange(connection_, nullptr);
    static bool done;
    done = false;
    if (connection->close_connection_done(connection, closed, &done) != 0) return;
    for (const auto until = Clock::now() + kClosing; !done && Clock::now() < until;)
        turn(until);
}

void Session::abandon() {
    if (connection_ == nullptr) return;
    response_ = nullptr;
    if (connection_->disable != nullptr) connection_->disable(connection_);
    close();
}

}  // namespace pwrmgt::ipmi::openipmi

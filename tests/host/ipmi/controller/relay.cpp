// SPDX-License-Identifier: Apache-2.0
#include "relay.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace {

sockaddr_in local(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int bound_socket(int& port) {
    const int made = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = local(0);
    socklen_t size = sizeof address;
    if (bind(made, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(made, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        ADD_FAILURE() << "no socket";
    }
    port = ntohs(address.sin_port);
    return made;
}

Datagram received(int socket, sockaddr_in& from) {
    Datagram datagram(2048);
    socklen_t size = sizeof from;
    const ssize_t length = recvfrom(socket, datagram.data(), datagram.size(), MSG_DONTWAIT,
                                    reinterpret_cast<sockaddr*>(&from), &size);
    datagram.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return datagram;
}

void send_to(int socket, const Datagram& datagram, int port) {
    const sockaddr_in address = local(port);
    sendto(socket, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&address),
           sizeof address);
}

// RMCP+ with the payload "open session request".
bool opens_session(const Datagram& datagram) {
    return datagram.size() > 5 && datagram[4] == 0x06 && (datagram[5] & 0x3F) == 0x10;
}

}  // namespace

Relay::Relay(int peer_port) : peer_port_(peer_port) {
    from_client_ = bound_socket(port_);
    if (pipe(stop_) != 0) ADD_FAILURE() << "no pipe";
    thread_ = std::thread([this] { run(); });
}

Relay::~Relay() {
    close(stop_[1]);
    thread_.join();
    close(stop_[0]);
    close(from_client_);
    for (const Way& way : ways_)
        close(way.to_peer);
}

void Relay::change_answers(Change change) {
    const std::lock_guard lock(mutex_);
    change_ = std::move(change);
}

void Relay::swallow_answers() {
    change_answers([](const Datagram&) { return std::vector<Datagram>{}; });
}

void Relay::run() {
    while (true) {
        std::vector<pollfd> waiting{{stop_[0], POLLIN, 0}, {from_client_, POLLIN, 0}};
        for (const Way& way : ways_)
            waiting.push_back({way.to_peer, POLLIN, 0});
        if (poll(waiting.data(), waiting.size(), -1) < 0) continue;
        if (waiting[0].revents != 0) return;
        for (std::size_t i = 2; i < waiting.size(); ++i) {
            if (waiting[i].revents != 0) take_answer(ways_[i - 2]);
        }
        if (waiting[1].revents != 0) take_request();
    }
}

void Relay::take_request() {
    sockaddr_in client{};
    const Datagram request = received(from_client_, client);
    ++requests_;
    if (opens_session(request)) ++logins_;
    send_to(way_of(ntohs(client.sin_port)).to_peer, request, peer_port_);
}

void Relay::take_answer(const Way& way) {
    sockaddr_in peer{};
    const Datagram answer = received(way.to_peer, peer);
    const std::lock_guard lock(mutex_);
    const auto passed = change_ ? change_(answer) : std::vector<Datagram>{answer};
    for (const Datagram& datagram : passed)
        send_to(from_client_, datagram, way.client_port);
}

const Relay::Way& Relay::way_of(std::uint16_t client_port) {
    for (const Way& way : ways_) {
        if (way.client_port == client_port) return way;
    }
    int port = 0;
    return ways_.emplace_back(Way{bound_socket(port), client_port});
}

// SPDX-License-Identifier: Apache-2.0
#include "peer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

// For a condition that comes about in an instant.
constexpr int kDeadlineMs = 60'000;

// With colons and an at sign, which the setting has to tell from its own.
constexpr const char* kUser = "operator";
constexpr const char* kPassword = "pass:w@rd";

void write_configuration(const std::string& place) {
    std::ofstream(place + "/lan.conf") << "name \"peer\"\n"
                                          "set_working_mc 0x20\n"
                                          "startlan 1\n"
                                          "  addr 127.0.0.1 0\n"
                                          "  priv_limit admin\n"
                                          "  allowed_auths_admin none md2 md5 straight\n"
                                          "  guid a123456789abcdefa123456789abcdef\n"
                                          "endlan\n"
                                          "user 2 true \""
                                       << kUser << "\" \"" << kPassword
                                       << "\" admin 10 none md2 md5 straight\n"
                                          "loadlib \"" PEER_MODULE "\" \""
                                       << place << "/ready\"\n";
    std::ofstream(place + "/commands")
        << "mc_setbmc 0x20\n"
           "mc_add 0x20 0x17 no-device-sdrs 0x23 9 8 0x9f 0x1291 0xf02\n"
           "mc_enable 0x20\n";
    std::filesystem::create_directory(place + "/state");
}

}  // namespace

Peer::Peer() {
    const std::string place = place_.directory();
    write_configuration(place);
    if (mkfifo((place + "/ready").c_str(), 0600) != 0) ADD_FAILURE() << "no fifo";
    process_ = fork();
    if (process_ == 0) {
        // It must not outlive a test that crashes.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int quiet = open("/dev/null", O_RDWR);
        dup2(quiet, 0);
        dup2(quiet, 1);
        dup2(quiet, 2);
        execl(IPMI_SIM, IPMI_SIM, "-n", "-c", (place + "/lan.conf").c_str(), "-f",
              (place + "/commands").c_str(), "-s", (place + "/state").c_str(), nullptr);
        _exit(127);
    }
    wait_until_ready();
}

Peer::~Peer() {
    die();
}

void Peer::die() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

void Peer::wait_until_ready() {
    const int ready = open((place_.directory() + "/ready").c_str(), O_RDONLY | O_NONBLOCK);
    pollfd waiting{ready, POLLIN, 0};
    std::array<char, 16> text{};
    if (poll(&waiting, 1, kDeadlineMs) == 1 && read(ready, text.data(), text.size() - 1) > 0) {
        port_ = std::atoi(text.data());
    }
    close(ready);
    if (port_ <= 0) ADD_FAILURE() << "ipmi_sim did not come up";
}

std::string lan_setting(int port, const std::string& user, const std::string& password) {
    return "lan://" + user + ":" + password + "@127.0.0.1:" + std::to_string(port);
}
std::string lan_setting(int port) {
    return lan_setting(port, kUser, kPassword);
}

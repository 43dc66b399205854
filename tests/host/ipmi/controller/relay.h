// SPDX-License-Identifier: Apache-2.0
// Stands between the library and its peer: counts what passes, and lets a test lose, change or add
// datagrams.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

using Datagram = std::vector<std::uint8_t>;

class Relay {
public:
    // What reaches the library in place of one answer.
    using Change = std::function<std::vector<Datagram>(const Datagram&)>;

    explicit Relay(int peer_port);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    int port() const { return port_; }
    int requests() const { return requests_; }
    int logins() const { return logins_; }  // requests to open a session
    void lead_to(int peer_port) { peer_port_ = peer_port; }
    void change_answers(Change change);
    void swallow_answers();

private:
    struct Way {
        int to_peer;
        std::uint16_t client_port;
    };

    void run();
    void take_request();
    void take_answer(const Way& way);
    const Way& way_of(std::uint16_t client_port);

    int from_client_ = -1;
    int stop_[2] = {-1, -1};
    int port_ = 0;
    std::atomic<int> peer_port_;
    std::atomic<int> requests_{0};
    std::atomic<int> logins_{0};
    std::mutex mutex_;
    Change change_;
    std::vector<Way> ways_;
    std::thread thread_;
};

// SPDX-License-Identifier: Apache-2.0
#include "loop.h"

#include "datagram.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <new>
#include <span>

// OpenIPMI leaves these to the system it runs on.
struct os_hnd_fd_id_s {
    int fd;
    os_data_ready_t ready;
    void* data;
    os_fd_data_freed_t freed;
};
struct os_hnd_timer_id_s {
    os_hnd_timer_id_s* next;
    bool running;
    pwrmgt::ipmi::openipmi::Clock::time_point due;
    os_timed_out_t timed_out;
    void* data;
};
struct os_hnd_lock_s {
    pthread_mutex_t mutex;
};

namespace pwrmgt::ipmi::openipmi {
namespace {

// A controller at a time has one or two.
constexpr std::size_t kMaxDescriptors = 8;
std::array<os_hnd_fd_id_t*, kMaxDescriptors> descriptors{};
os_hnd_timer_id_t* timers = nullptr;
pthread_mutex_t in_library = PTHREAD_MUTEX_INITIALIZER;

int add_descriptor(os_handler_t*, int fd, os_data_ready_t ready, void* data,
                   os_fd_data_freed_t freed, os_hnd_fd_id_t** id) {
    auto* const place = std::find(descriptors.begin(), descriptors.end(), nullptr);
    if (place == descriptors.end()) return EMFILE;
    *place = new (std::nothrow) os_hnd_fd_id_t{fd, ready, data, freed};
    if (*place == nullptr) return ENOMEM;
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    *id = *place;
    return 0;
}

int remove_descriptor(os_handler_t*, os_hnd_fd_id_t* id) {
    std::replace(descriptors.begin(), descriptors.end(), id, static_cast<os_hnd_fd_id_t*>(nullptr));
    if (id->freed != nullptr) id->freed(id->fd, id->data);
    delete id;
    return 0;
}

int make_timer(os_handler_t*, os_hnd_timer_id_t** id) {
    *id = new (std::nothrow) os_hnd_timer_id_t{timers, false, {}, nullptr, nullptr};
    if (*id == nullptr) return ENOMEM;
    timers = *id;
    return 0;
}

int free_timer(os_handler_t*, os_hnd_timer_id_t* id) {
    os_hnd_timer_id_t** link = &timers;
    while (*link != id)
        link = &(*link)->next;
    *link = id->next;
    delete id;
    return 0;
}

int start_timer(os_handler_t*, os_hnd_timer_id_t* id, timeval* timeout, os_timed_out_t timed_out,
                void* data) {
    if (id->running) return EBUSY;
    id->running = true;
    id->due = Clock::now() + std::chrono::seconds(timeout->tv_sec) +
              std::chrono::microseconds(timeout->tv_usec);
    id->timed_out = timed_out;
    id->data = data;
    return 0;
}

int stop_timer(os_handler_t*, os_hnd_timer_id_t* id) {
    if (!id->running) return ESRCH;
    id->running = false;
    return 0;
}

// Exchanges take turns, but a program that uses OpenIPMI itself shares its global locks with us.
int make_lock(os_handler_t*, os_hnd_lock_t** id) {
    *id = new (std::nothrow) os_hnd_lock_t{PTHREAD_MUTEX_INITIALIZER};
    return *id == nullptr ? ENOMEM : 0;
}
int destroy_lock(os_handler_t*, os_hnd_lock_t* id) {
    delete id;
    return 0;
}
int lock(os_handler_t*, os_hnd_lock_t* id) {
    return pthread_mutex_lock(&id->mutex);
}
int unlock(os_handler_t*, os_hnd_lock_t* id) {
    return pthread_mutex_unlock(&id->mutex);
}

int fill_random(os_handler_t*, void* data, unsigned int length) {
    return getrandom(data, length, 0) == static_cast<ssize_t>(length) ? 0 : EIO;
}

int clock_now(clockid_t clock, timeval* now) {
    timespec time{};
    if (clock_gettime(clock, &time) != 0) return errno;
    now->tv_sec = time.tv_sec;
    now->tv_usec = time.tv_nsec / 1000;
    return 0;
}
int monotonic_now(os_handler_t*, timeval* now) {
    return clock_now(CLOCK_MONOTONIC, now);
}
int real_now(os_handler_t*, timeval* now) {
    return clock_now(CLOCK_REALTIME, now);
}

// What a caller has to know is told by the exchange's result. Left alone, OpenIPMI would write on
// the program's standard error.
void ignore_log(os_handler_t*, ipmi_log_type_e, const char*, ...) {}
void ignore_log_list(os_handler_t*, ipmi_log_type_e, const char*, va_list) {}

void* allocate(int size) {
    return std::malloc(static_cast<std::size_t>(size));
}

// OpenIPMI's own way to allocate one asks the handler that it already has. Later versions append
// members; here they are null.
struct RoomyHandler {
    os_handler_t handler;
    std::array<void*, 64> appended;
};

os_handler_t* make_handler() {
    static RoomyHandler room{};
    os_handler_t* const made = &room.handler;
    made->mem_alloc = allocate;
    made->mem_free = std::free;
    made->add_fd_to_wait_for = add_descriptor;
    made->remove_fd_to_wait_for = remove_descriptor;
    made->alloc_timer = make_timer;
    made->free_timer = free_timer;
    made->start_timer = start_timer;
    made->stop_timer = stop_timer;
    made->create_lock = make_lock;
    made->destroy_lock = destroy_lock;
    made->lock = lock;
    made->unlock = unlock;
    made->get_random = fill_random;
    made->log = ignore_log;
    made->vlog = ignore_log_list;
    made->get_monotonic_time = monotonic_now;
    made->get_real_time = real_now;
    return made;
}

os_hnd_timer_id_t* next_timer() {
    os_hnd_timer_id_t* next = nullptr;
    for (os_hnd_timer_id_t* timer = timers; timer != nullptr; timer = timer->next) {
        if (timer->running && (next == nullptr || timer->due < next->due)) next = timer;
    }
    return next;
}

int milliseconds_until(Clock::time_point until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
}

// Takes a datagram that OpenIPMI must not see out of its way.
bool dropped(int fd) {
    std::array<std::uint8_t, kLongestDatagram + 1> datagram{};
    const ssize_t length = recv(fd, datagram.data(), datagram.size(), MSG_PEEK | MSG_DONTWAIT);
    if (length < 0 || awaited(std::span(datagram).first(static_cast<std::size_t>(length)))) {
        return false;
    }
    recv(fd, datagram.data(), 1, MSG_DONTWAIT);
    return true;
}

void wait_for_input(Clock::time_point until) {
    std::array<pollfd, kMaxDescriptors> waiting{};
    for (std::size_t i = 0; i < kMaxDescriptors; ++i) {
        waiting[i] = {descriptors[i] != nullptr ? descriptors[i]->fd : -1, POLLIN, 0};
    }
    {
        const Outside outside;
        if (poll(waiting.data(), waiting.size(), milliseconds_until(until)) <= 0) return;
    }
    for (std::size_t i = 0; i < kMaxDescriptors; ++i) {
        // A handler before this one may have taken it away.
        os_hnd_fd_id_t* const id = descriptors[i];
        if (waiting[i].revents != 0 && id != nullptr && id->fd == waiting[i].fd &&
            !dropped(id->fd)) {
            id->ready(id->fd, id->data, id);
        }
    }
}

}  // namespace

os_handler_t* system_handler() noexcept {
    static os_handler_t* const handler = make_handler();
    return handler;
}

void turn(Clock::time_point until) noexcept {
    os_hnd_timer_id_t* const timer = next_timer();
    if (timer != nullptr && timer->due <= Clock::now()) {
        timer->running = false;
        timer->timed_out(timer->data, timer);
        return;
    }
    wait_for_input(timer != nullptr ? std::min(timer->due, until) : until);
}

InLibrary::InLibrary() noexcept {
    static std::once_flag watching;
    std::call_once(watching, [] {
        pthread_atfork([] { pthread_mutex_lock(&in_library); },
                       [] { pthread_mutex_unlock(&in_library); },
                       [] { pthread_mutex_unlock(&in_library); });
    });
    pthread_mutex_lock(&in_library);
}
InLibrary::~InLibrary() {
    pthread_mutex_unlock(&in_library);
}
Outside::Outside() noexcept {
    pthread_mutex_unlock(&in_library);
}
Outside::~Outside() {
    pthread_mutex_lock(&in_library);
}

}  // namespace pwrmgt::ipmi::openipmi

/* SPDX-License-Identifier: Apache-2.0
 * Teaches ipmi_sim, another project's controller, some of the OEM commands: the capping exchange
 * with a state that is kept, the real-time reading and the data store. It is loaded into ipmi_sim,
 * and knows nothing of the host platform. */
#include <OpenIPMI/mcserv.h>
#include <arpa/inet.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

enum { POWER_NETFN = 0x3A, POWER_COMMAND = 0x32, STORE_COMMAND = 0x90, ENTERPRISE = 0 };
enum { NOT_PRESENT = 0xCB, INVALID_COMMAND = 0xC1 };

static unsigned char cap[4]; /* enable, watts, mode */
static char ready_file[256];

static void put(unsigned char* answer, unsigned int* length, const unsigned char* bytes,
                unsigned int count) {
    memcpy(answer, bytes, count);
    *length = count;
}

static void refuse(unsigned char* answer, unsigned int* length, unsigned char code) {
    put(answer, length, &code, 1);
}

static void set_cap(const msg_t* message, unsigned char* answer, unsigned int* length) {
    static const unsigned char accepted[] = {0, 0};
    static const unsigned char rejected[] = {0, 1};
    const unsigned int watts = message->data[2] + 256U * message->data[3];
    if (message->data[1] == 1 && watts > 2000) {
        put(answer, length, rejected, sizeof rejected);
        return;
    }
    memcpy(cap, message->data + 1, sizeof cap);
    put(answer, length, accepted, sizeof accepted);
}

static void power(lmc_data_t* mc, msg_t* message, unsigned char* answer, unsigned int* length,
                  void* unused) {
    static const unsigned char reading[] = {0,  0x2C, 0x01, 0x0E, 0x01, 0x78, 0, 0x28, 0,
                                            50, 40,   30,   20,   4,    3,    2, 1};
    const unsigned char cap_now[] = {0, 0, cap[0], cap[1], cap[2], cap[3]};
    const unsigned int operation = message->len > 0 ? message->data[0] : 0;
    (void)mc;
    (void)unused;
    if (operation == 0x01 && message->len == 5) {
        put(answer, length, reading, sizeof reading);
    } else if (operation == 0x02 && message->len >= 5) {
        set_cap(message, answer, length);
    } else if (operation == 0x03 && message->len == 5) {
        put(answer, length, cap_now, sizeof cap_now);
    } else {
        refuse(answer, length, INVALID_COMMAND);
    }
}

/* ipmi_sim takes the enterprise number off a request and puts it into the answer. */
static void store(lmc_data_t* mc, msg_t* message, unsigned char* answer, unsigned int* length,
                  void* unused) {
    static const unsigned char opened[] = {0, 0x78, 0x56, 0x34, 0x12};
    static unsigned char name[112];
    static unsigned int name_length;
    (void)mc;
    (void)unused;
    if (message->len > 9 && message->data[0] == 0x01 && message->len - 9 <= sizeof name) {
        name_length = message->len - 9;
        memcpy(name, message->data + 9, name_length);
        put(answer, length, opened, sizeof opened);
    } else if (message->len == 11 && message->data[0] == 0x02 &&
               memcmp(message->data + 1, opened + 1, 4) == 0) {
        /* 200 bytes of the file: its own name, over and over. */
        answer[0] = 0;
        answer[1] = 200;
        answer[2] = 0;
        for (unsigned int i = 0; i < 200; ++i)
            answer[3 + i] = name[i % name_length];
        *length = 203;
    } else {
        refuse(answer, length, NOT_PRESENT);
    }
}

int ipmi_sim_module_print_version(sys_data_t* sys, const char* options);
int ipmi_sim_module_init(sys_data_t* sys, const char* options);
int ipmi_sim_module_post_init(sys_data_t* sys);

int ipmi_sim_module_print_version(sys_data_t* sys, const char* options) {
    (void)sys;
    (void)options;
    return 0;
}

int ipmi_sim_module_init(sys_data_t* sys, const char* options) {
    (void)sys;
    snprintf(ready_file, sizeof ready_file, "%s", options);
    ipmi_emu_register_iana_handler(ENTERPRISE, store, NULL);
    return ipmi_emu_register_cmd_handler(POWER_NETFN, POWER_COMMAND, power, NULL);
}

/* ipmi_sim was given port 0: tells the test, which waits for it, where it listens now. */
int ipmi_sim_module_post_init(sys_data_t* sys) {
    (void)sys;
    FILE* ready = fopen(ready_file, "w");
    if (ready == NULL) return 1;
    for (int fd = 0; fd < 256; ++fd) {
        struct sockaddr_in address;
        socklen_t size = sizeof address;
        if (getsockname(fd, (struct sockaddr*)&address, &size) == 0 &&
            address.sin_family == AF_INET) {
            fprintf(ready, "%d\n", ntohs(address.sin_port));
        }
    }
    return fclose(ready);
}

// SPDX-License-Identifier: Apache-2.0
// The command `store read`: the first block of a file in the firmware's data store.
#include <array>
#include <ctime>

#include "answer.h"
#include "bytes_text.h"
#include "output_file.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

// The answer has its number of data bytes in bytes 4 and 5, the data from byte 6 on. The library is
// told of room for no more than it asks for: a firmware that tells more is refused.
constexpr size_t kCountAt = 4;
constexpr size_t kDataAt = 6;
constexpr size_t kMostData = 200;
constexpr int32_t kRoom = kDataAt + kMostData;

struct Options : CommonOptions {
    std::string name;
    std::string output;
    bool hex = false;
};

using Reply = std::array<uint8_t, PWRMGT_REPLY_SIZE>;

Bytes data_of(const Reply& reply) {
    const size_t count = reply[kCountAt] + size_t{reply[kCountAt + 1]} * 256;
    return Bytes(reply).subspan(kDataAt, count);
}

Answer answer_of(const Options& options, Bytes data, int64_t asked_at_s, double query_ms) {
    std::string title = options.name + ": " + std::to_string(data.size()) + " bytes";
    if (data.size() == kMostData) title += ", as many as can be read; the file may be longer";
    if (!options.output.empty()) title += ", written to " + options.output;
    return {"store.read/1", Origin::firmware, title, asked_at_s, query_ms};
}

Json body_of(const Options& options, Bytes data) {
    Json body{{"name", options.name}, {"size_bytes", data.size()}};
    body["may_be_longer"] = data.size() == kMostData;
    body["output"] = options.output.empty() ? Json(nullptr) : Json(options.output);
    body["data_hex"] = hex_digits(data);
    body["data_text"] =
        is_plain_text(data) ? Json(std::string(data.begin(), data.end())) : Json(nullptr);
    return body;
}

Outcome show(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    Reply reply{};
    const Timed done =
        timed([&] { return pwrmgt_ds_file_read(options.name.c_str(), reply.data(), kRoom); });
    if (done.status != 0) return explain(Call::store, done.status, options.name);
    const Bytes data = data_of(reply);
    if (!options.output.empty()) {
        const std::string wrong = write_file(options.output, std::string(data.begin(), data.end()));
        if (!wrong.empty()) return fail(Exit::failure, wrong);
    }
    const Answer answer = answer_of(options, data, asked_at_s, done.query_ms);
    if (options.json) return succeed(answer_json(answer, options, body_of(options, data)));
    if (options.hex) return succeed(answer_text(answer, options, hex_dump(data)));
    if (!options.output.empty()) return succeed(answer_text(answer, options, ""));
    if (data.size() == kMostData) {
        return succeed_but(Exit::ok, std::string(data.begin(), data.end()),
                           "only the first 200 bytes can be read; the file may be longer");
    }
    return succeed(std::string(data.begin(), data.end()));
}

}  // namespace

void add_store(cli::Command store, Action& chosen) {
    const auto options = std::make_shared<Options>();
    cli::Command read =
        add_command(store, chosen,
                    {"read", "The first 200 bytes of a file in the firmware's data store",
                     "The bytes go to standard output as they are, unless told otherwise.\n"
                     "\n"
                     "Examples:\n"
                     "  pwrmgtctl store read inventory.txt\n"
                     "  pwrmgtctl store read sel.bin --hex\n"
                     "  pwrmgtctl store read sel.bin --output sel.bin"},
                    options, show);
    read.add_option("NAME", options->name, "File name, 1 to 112 characters")
        .required()
        .check(cli::text_up_to(PWRMGT_MAX_STORE_NAME))
        .type_name(" ");
    cli::Option hex =
        read.add_flag("--hex", options->hex, "A dump for people").excludes(read.option("--json"));
    read.add_option("--output", options->output, "Write the bytes to this file")
        .type_name("FILE")
        .excludes(hex);
}

}  // namespace pwrmgt::pwrmgtctl

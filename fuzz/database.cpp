// SPDX-License-Identifier: Apache-2.0
// The host's database client: raw texts, names, filters, and handles of every kind where any other
// belongs.
#include <stdlib.h>

#include <array>

#include "scratch_place.h"
#include "script.h"
#include "vekdb_client.h"

namespace {

using pwrmgt::fuzz::Script;

// A handle that was handed out, of whichever kind, or any number.
class Handles {
public:
    std::uint32_t pick(Script& script) const {
        const std::uint8_t which = script.u8();
        return which < 240 ? known_[which % known_.size()] : script.u32();
    }
    void keep(std::uint32_t handle) { known_[next_++ % known_.size()] = handle; }

private:
    std::array<std::uint32_t, 8> known_{};
    std::size_t next_ = 0;
};

const char* table(Script& script) {
    constexpr std::array kTables{"HistPowers24HrMem", "HistPowers24Hr",     "PowerPolicy",
                                 "PsuPropertyMem",    "HistThermal24HrMem", "NoSuchTable"};
    return kTables[script.u8() % kTables.size()];
}

const char* column(Script& script) {
    constexpr std::array kColumns{"_id",     "Timestamp", "SysAvgDc",
                                  "IsBlade", "Value",     "NoSuchColumn"};
    return kColumns[script.u8() % kColumns.size()];
}

void ask(Script& script, Handles& handles) {
    std::uint32_t result = 0;
    if (script.u8() % 2 == 0) {
        const std::string sql = script.text(300);
        vek_db_raw_query(handles.pick(script), sql.data(), static_cast<std::uint32_t>(sql.size()),
                         script.u8() % 2 == 0 ? &result : nullptr);
    } else {
        const std::array columns{column(script), column(script)};
        const std::string where = script.text(80);
        const std::string order = script.text(40);
        vek_db_query(handles.pick(script), table(script), columns.data(), script.u8() % 3,
                     where.c_str(), script.u8(), script.u8(), order.c_str(), &result);
    }
    handles.keep(result);
}

void read(Script& script, const Handles& handles) {
    std::int32_t wide = 0;
    std::uint16_t narrow = 0;
    const std::uint32_t result = handles.pick(script);
    vek_db_result_row_count(result);
    for (int rows = 0; rows < 20 && vek_db_result_step(result) == 9; ++rows) {
        vek_db_result_column_int(result, script.u8() % 4 - 1, &wide);
        vek_db_result_column_short_uint(result, script.u8(), &narrow);
    }
}

void change(Script& script, const Handles& handles) {
    const std::uint32_t content = handles.pick(script);
    vek_db_content_put_uint(content, column(script), script.u32());
    vek_db_content_put_char(content, column(script), static_cast<std::int8_t>(script.u8()));
    const std::string where = script.text(60);
    switch (script.u8() % 3) {
        case 0:
            vek_db_insert(handles.pick(script), table(script), content, 0, 0);
            break;
        case 1:
            vek_db_update(handles.pick(script), table(script), content, where.c_str(), 0, 0);
            break;
        default:
            vek_db_delete(handles.pick(script), table(script), where.c_str());
    }
}

void give_back(Script& script, const Handles& handles) {
    switch (script.u8() % 3) {
        case 0:
            vek_db_close(handles.pick(script));
            break;
        case 1:
            vek_db_free_result(handles.pick(script));
            break;
        default:
            vek_db_free_content_values(handles.pick(script));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const std::string place = pwrmgt::fuzz::ScratchPlace::only().directory();
    setenv("VEKDB_STATE_DIR", (place + "/state").c_str(), 1);
    setenv("VEKDB_RUNTIME_DIR", (place + "/run").c_str(), 1);
    unsetenv("VEKDB_SERVER");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    Handles handles;
    const std::uint32_t connection = vek_db_open("localhost", "vek", "", "vek_pwr_db", 0);
    const std::uint32_t content = vek_db_get_content_values();
    if (connection == 0 || content == 0) std::abort();
    handles.keep(connection);
    handles.keep(content);
    for (int call = 0; call < 12 && !script.ended(); ++call) {
        switch (script.u8() % 4) {
            case 0:
                ask(script, handles);
                break;
            case 1:
                read(script, handles);
                break;
            case 2:
                change(script, handles);
                break;
            default:
                give_back(script, handles);
        }
    }
    // Whatever became of them: a handle that came back already is an error return, no more. Handles
    // are small numbers in a row, so the results are found as well.
    vek_db_close(connection);
    vek_db_free_content_values(content);
    for (int i = 0; i < 8; ++i) {
        Script all(reinterpret_cast<const std::uint8_t*>("\0\1\2\3\4\5\6\7") + i, 1);
        vek_db_free_result(handles.pick(all));
    }
    return 0;
}

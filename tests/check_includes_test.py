# SPDX-License-Identifier: Apache-2.0
"""check_includes.py on trees made to break each of its rules."""
import os

import check_common
import check_includes


class Flow(check_common.TreeCase):
    def breaches(self):
        return check_includes.flow_breaches(self.root)[1]

    def test_a_tree_that_keeps_the_rules_passes(self):
        self.write("include/pub.h", "#include <stdint.h>\n")
        self.write("platform/include/client.h", "")
        self.write("src/db/owned.h", '#include "client.h"\n')
        self.write("src/query/window.h", '#include "db/owned.h"\n')
        self.write("src/query/by.cpp", '#include "query/window.h"\n#include "pub.h"\n')
        self.write("tools/ctl/main.cpp", '#include <pub.h>\n#include "platform/host/db/state_dir.h"\n')
        self.write("platform/host/db/state_dir.h", '#include "client.h"\n')
        self.write("tests/query/by_test.cpp", '#include "query/window.h"\n#include "support/recorder.h"\n')
        self.write("tests/support/recorder.h", '#include "client.h"\n')

        self.assertEqual(self.breaches(), [])

    def test_one_room_may_not_include_another(self):
        self.write("src/policy/frame.h", "")
        self.write("src/query/by.cpp", '\n#include "policy/frame.h"\n')

        self.assert_breach(self.breaches(), "src/query/by.cpp:2", "may not include src/policy/frame.h")

    def test_the_database_room_may_not_include_a_room_above_it(self):
        self.write("src/query/window.h", "")
        self.write("src/db/session.cpp", '#include "../query/window.h"\n')

        self.assert_breach(self.breaches(), "src/db/session.cpp:1", "src/query/window.h")

    def test_a_tool_may_not_look_into_the_library(self):
        self.write("src/db/owned.h", "")
        self.write("tools/ctl/main.cpp", '#include "src/db/owned.h"\n')

        self.assert_breach(self.breaches(), "tools may not include src/db/owned.h")

    def test_a_tool_may_use_one_header_of_the_host_platform_only(self):
        self.write("platform/host/db/handles.h", "")
        self.write("tools/ctl/main.cpp", '#include "db/handles.h"\n')

        self.assert_breach(self.breaches(), "tools may not include platform/host/db/handles.h")

    def test_the_host_platform_may_not_look_into_the_library(self):
        self.write("src/db/text.h", "")
        self.write("platform/host/db/client.cpp", '#include "db/text.h"\n')

        self.assert_breach(self.breaches(), "platform/host may not include src/db/text.h")

    def test_the_library_may_not_include_the_trace_reader(self):
        self.write("trace/trace.h", "")
        self.write("src/history/row.cpp", '#include "trace/trace.h"\n')

        self.assert_breach(self.breaches(), "src/history may not include trace/trace.h")

    def test_the_trace_reader_includes_nothing_of_ours(self):
        self.write("include/pub.h", "")
        self.write("trace/trace.cpp", '#include "pub.h"\n')

        self.assert_breach(self.breaches(), "trace may not include include/pub.h")

    def test_the_public_header_includes_nothing_of_ours_in_angle_brackets_either(self):
        self.write("platform/include/client.h", "")
        self.write("include/pub.h", "#include <client.h>\n")

        self.assert_breach(self.breaches(), "include may not include platform/include/client.h")

    def test_a_test_room_may_not_include_another_test_room(self):
        self.write("tests/policy/cases.h", "")
        self.write("tests/query/by_test.cpp", '#include "tests/policy/cases.h"\n')

        self.assert_breach(self.breaches(), "tests/query may not include tests/policy/cases.h")

    def test_a_file_that_only_the_build_knows_the_way_to_is_held_to_the_rules_too(self):
        self.write("tests/tools/ctl/tool.h", "")
        self.write("tests/way/reload_test.cpp", '#include "tool.h"\n')
        self.write("tests/query/by_test.cpp", '#include "tool.h"\n')

        self.assertEqual(self.breaches(), ["tests/query/by_test.cpp:1: tests/query may not include tests/tools/ctl/tool.h"])

    def test_a_tool_s_test_finds_the_tool_s_own_header(self):
        self.write("tools/ctl/chart.h", "")
        self.write("tools/daemon/chart.h", "")
        self.write("tests/tools/ctl/chart_test.cpp", '#include "chart.h"\n')

        self.assertEqual(self.breaches(), [])

    def test_a_cycle_is_reported_with_its_path(self):
        self.write("src/query/a.h", '#include "query/b.h"\n')
        self.write("src/query/b.h", '#include "query/a.h"\n')

        self.assert_breach(self.breaches(), "include cycle: src/query/a.h -> src/query/b.h -> src/query/a.h")

    def test_a_quoted_name_that_is_no_file_of_ours_is_reported(self):
        self.write("src/query/a.h", '#include "string.h"\n')

        self.assert_breach(self.breaches(), "src/query/a.h:1", "<string.h>")


class CompileAlone(check_common.TreeCase):
    def test_a_header_that_needs_another_one_first_is_reported(self):
        self.write("include/pub.h", "inline uint32_t one() { return 1; }\n")
        self.write("src/db/good.h", "#pragma once\n#include <cstdint>\n")

        looked_at, breaches = check_includes.compile_breaches(self.root, "c++")

        self.assertEqual(looked_at, 2)
        self.assertEqual(len(breaches), 1)
        self.assert_breach(breaches, "include/pub.h: does not compile alone", "uint32_t")

    def looked_at(self, header, source, rules="add_library(db good.cpp)\n"):
        self.write(header, "#pragma once\n")
        self.write(header[:-1] + "cpp", source)
        self.write(os.path.dirname(header) + "/CMakeLists.txt", rules)
        return check_includes.compile_breaches(self.root, "c++")[0]

    def test_a_header_that_its_own_source_includes_first_is_left_to_the_build(self):
        self.assertEqual(self.looked_at("src/db/good.h", '// Good.\n#include "good.h"\n\n#include <string>\n'), 0)

    def test_a_header_that_comes_second_is_compiled(self):
        self.assertEqual(self.looked_at("src/db/good.h", '#include <string>\n\n#include "good.h"\n'), 1)

    def test_a_header_behind_precompiled_ones_is_compiled(self):
        self.assertEqual(self.looked_at("tools/good.h", '#include "good.h"\n', "target_precompile_headers(good)\n"), 1)

    def test_a_header_that_no_build_has_to_compile_is_compiled(self):
        self.assertEqual(self.looked_at("bench/good.h", '#include "good.h"\n'), 1)

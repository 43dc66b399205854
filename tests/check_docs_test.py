# SPDX-License-Identifier: Apache-2.0
"""check_docs.py on documents that lead nowhere."""
import check_common
import check_docs


class Documents(check_common.TreeCase):
    def breaches(self):
        return check_docs.document_breaches(self.root)[1]

    def test_links_anchors_and_paths_that_lead_somewhere_pass(self):
        self.write("src/db/owned.h", "")
        self.write("docs/a.md", "# The `db` room: what's in it\n# Twice\n# Twice\n")
        self.write("README.md", "[a](docs/a.md#the-db-room-whats-in-it) [2](docs/a.md#twice-1) [o](https://example.org/x)\n"
                                "[room](src/db) `src/db/owned.h:12` `src/db/` `/etc/vekdb/x` `a/b`\n# End\n[e](#end)\n")
        self.write("docs/b.md", "[up](../README.md) `src/<room>/x` `src/*.cpp`\n```\n[none](none.md) `src/none`\n```\n")

        self.assertEqual(self.breaches(), [])

    def test_a_link_to_a_missing_file_is_reported_with_its_line(self):
        self.write("docs/a.md", "one\n```\n\n```\n[b](b.md)\n")

        self.assert_breach(self.breaches(), "docs/a.md:5", "b.md, which does not exist")

    def test_a_link_out_of_the_tree_is_reported(self):
        self.write("a.md", "[b](../../../../../../etc/passwd)\n")

        self.assert_breach(self.breaches(), "a.md:1", "does not exist")

    def test_an_anchor_without_a_heading_is_reported(self):
        self.write("docs/a.md", "# One\n[b](#two)\n")
        self.write("README.md", "[a](docs/a.md#three)\n")

        self.assert_breach(self.breaches(), "docs/a.md:2", "#two")
        self.assert_breach(self.breaches(), "README.md:1", "#three")

    def test_a_heading_inside_a_code_block_is_no_anchor(self):
        self.write("a.md", "```\n# One\n```\n[b](#one)\n")

        self.assert_breach(self.breaches(), "a.md:4", "#one")

    def test_a_path_that_does_not_exist_is_reported(self):
        self.write("scripts/test", "")
        self.write("docs/a.md", "Run `./scripts/test --list`, then `./scripts/tset`.\n")

        self.assertEqual(self.breaches(), ["docs/a.md:1: names ./scripts/tset, which does not exist"])

    def test_a_readme_of_121_lines_is_too_long_and_one_of_120_is_not(self):
        self.write("README.md", "x\n" * 120)
        self.assertEqual(self.breaches(), [])

        self.write("README.md", "x\n" * 121)
        self.assert_breach(self.breaches(), "121 lines")

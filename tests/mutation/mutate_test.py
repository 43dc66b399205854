# SPDX-License-Identifier: Apache-2.0
"""Which breakages a run tries, in which order, and what it knows from an earlier run."""
import pathlib
import shutil
import tempfile
import unittest

from mutants import Mutant
from mutate import Record, chosen_mutants, excused
from workshop import ROOMS, rooms_that_see


class Run(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)
        self.write("src/query/a.cpp", "int a() {\n    return 24;\n}\n")

    def write(self, file, text):
        path = self.root / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def chosen(self, rooms=ROOMS, share=1.0, seed=1):
        return [(mutant.file, mutant.after.strip()) for mutant in chosen_mutants(self.root, rooms, share, seed)]


class Choice(Run):
    def test_headers_come_after_the_sources_of_their_room(self):
        self.write("src/query/a.h", "int b() {\n    return 0;\n}\n")
        self.write("src/psu/c.cpp", "int c() {\n    return 0;\n}\n")

        self.assertEqual([file for file, _ in self.chosen(("query", "psu"))],
                         ["src/query/a.cpp", "src/query/a.cpp", "src/query/a.h", "src/psu/c.cpp"])

    def test_a_room_is_chosen_from_as_in_a_run_of_all(self):
        self.write("src/db/many.cpp", "\n".join(f"    return {number};" for number in range(2, 100)))
        both = [mutant for mutant in self.chosen(share=0.5) if mutant[0] == "src/query/a.cpp"]

        self.assertEqual(self.chosen(("query",), share=0.5), both)

    def test_other_files_are_left_alone(self):
        self.write("src/query/CMakeLists.txt", "    return 24;\n")

        self.assertEqual({file for file, _ in self.chosen()}, {"src/query/a.cpp"})

    def test_what_all_rooms_stand_on_is_seen_by_all(self):
        self.assertEqual(rooms_that_see("src/db/text.h"), ROOMS)
        self.assertEqual(rooms_that_see("src/psu/bays.h"), ("psu",))


class Recorded(Run):
    def setUp(self):
        super().setUp()
        self.mutant = Mutant("src/query/a.cpp", 2, "constant", "    return 24;", "    return 25;", "")

    def after(self, outcome):
        Record(self.root / "record", self.root).add(self.mutant, outcome)
        return Record(self.root / "record", self.root)

    def test_an_outcome_is_known_to_the_next_run(self):
        for outcome in ("killed", "invalid", "same"):
            with self.subTest(outcome):
                self.assertEqual(self.after(outcome).outcome(self.mutant), outcome)

    def test_what_survived_is_tried_again(self):
        self.assertIsNone(self.after("survived").outcome(self.mutant))

    def test_the_last_outcome_counts(self):
        self.after("survived")

        self.assertEqual(self.after("killed").outcome(self.mutant), "killed")

    def test_another_text_of_the_file_is_tried_afresh(self):
        record = self.after("killed")
        self.write("src/query/a.cpp", "int a() {\n    return 26;\n}\n")

        self.assertIsNone(record.outcome(self.mutant))

    def test_without_a_file_nothing_is_known(self):
        record = Record(None, self.root)
        record.add(self.mutant, "killed")

        self.assertIsNone(record.outcome(self.mutant))


class Excused(Run):
    def test_a_reason_follows_the_last_bar(self):
        self.write("list", "# a comment\nsrc/a.cpp: a | b -> a & b | why\n")

        self.assertEqual(excused(self.root / "list"), {"src/a.cpp: a | b -> a & b": "why"})


if __name__ == "__main__":
    unittest.main()

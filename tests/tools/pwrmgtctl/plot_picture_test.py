# SPDX-License-Identifier: Apache-2.0
"""What the pictures show: every point of an SVG read back into time and watts, gaps and bands included; PNG sizes; and
colours on a terminal."""
import os
import pty
import re
import shutil
import sqlite3
import struct
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SVG = "{http://www.w3.org/2000/svg}"
END = 1700000010  # 2023-11-14T22:13:30Z
MINUTES = 30
START = END - MINUTES * 60
NO_POWER = 65535
POINT = re.compile(r"(-?[\d.]+),(-?[\d.]+)")


class Picture(unittest.TestCase):
    def setUp(self):
        self.place = Path(tempfile.mkdtemp(prefix="plot-picture-"))
        self.addCleanup(shutil.rmtree, self.place)
        kept = {k: v for k, v in os.environ.items() if not k.startswith("VEKDB_") and k != "NO_COLOR"}
        self.environment = kept | {"VEKDB_STATE_DIR": str(self.place / "state"), "VEKDB_RUNTIME_DIR": str(self.place / "run")}
        for name in ("state", "run"):
            (self.place / name).mkdir(mode=0o700)
        self.ctl("metrics")  # makes the tables

    def ctl(self, *arguments):
        run = subprocess.run([os.environ["PWRMGTCTL"], *arguments], env=self.environment, capture_output=True, timeout=120,
                             stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout

    def store(self, slots):
        """{slots back from the newest: DC mean in watts, or None}; minimum 20 below, maximum 30 above. No AC."""
        rows = sqlite3.connect(self.place / "run" / "vek_pwr_db-mem.sqlite")
        for back, watts in slots.items():
            stamp = END - 30 * back
            values = [NO_POWER] * 3 if watts is None else [watts, watts + 30, watts - 20]
            rows.execute("INSERT INTO HistPowers24HrMem (_id, Timestamp, SysAvgDc, SysMaxDc, SysMinDc, SysAvgAc, SysMaxAc, "
                         "SysMinAc) VALUES (?, ?, ?, ?, ?, 65535, 65535, 65535)", (stamp // 30 % 2880, stamp, *values))
        rows.commit()
        rows.close()

    def store_cap(self, watts, on):
        rows = sqlite3.connect(self.place / "state" / "vek_pwr_db.sqlite")
        rows.execute("DELETE FROM PowerPolicy")
        rows.execute("INSERT INTO PowerPolicy (_id, IsBlade, RedunMode, CapEnable, CapValue) VALUES (0, 0, 1, ?, ?)",
                     (on, watts))
        rows.commit()
        rows.close()

    def svg(self, *arguments):
        picture = self.ctl("power", "history", "--end", str(END), "--minutes", str(MINUTES), *arguments, "--svg", "-")
        return Drawing(picture)


class Drawing:
    """An SVG as the numbers that it shows."""

    def __init__(self, text):
        self.root = ElementTree.fromstring(text)
        # The frame is the one path that goes down and then to the right.
        frames = [path.get("d").strip().split(" M")[0] for path in self.root.iter(SVG + "path")
                  if path.get("stroke") == "rgb(128, 128, 128)" and path.get("d").count("L") == 2]
        corners = [tuple(map(float, pair)) for pair in POINT.findall(frames[0])]
        self.left, self.right = corners[0][0], corners[2][0]
        self.top, self.bottom = corners[0][1], corners[1][1]
        self.scale = self.value_scale()

    def words(self):
        return [" ".join("".join(text.itertext()).split()) for text in self.root.iter(SVG + "text")]

    def value_scale(self):
        """(pixel, watts) of two marks of the axis of values."""
        marks = []
        for holder in self.root.iter(SVG + "g"):
            ticks = [path for path in holder.findall(SVG + "path") if path.get("d").startswith(f"M{self.left:.2f},")]
            labels = [text for text in holder.iter(SVG + "text") if text.text and text.text.strip().isdigit()]
            if len(ticks) == 1 and len(labels) == 1:
                marks.append((float(POINT.findall(ticks[0].get("d"))[0][1]), int(labels[0].text)))
        return marks[0], marks[-1]

    def reading(self, pair):
        (low_y, low), (high_y, high) = self.scale
        x, y = map(float, pair)
        time = START + (x - self.left) / (self.right - self.left) * (END - START)
        return round((END - time) / 30), round(low + (y - low_y) / (high_y - low_y) * (high - low))

    def element(self, name):
        """The part of the picture with that name in its legend, and the parts of the same colour that go with it."""
        for group in self.root.iter(SVG + "g"):
            titles = [text for text in group.iter(SVG + "text")]
            if (group.get("id") or "").startswith("gnuplot_plot_") and titles and titles[0].text.strip() == name:
                return group
        raise AssertionError(f"nothing in the picture is called {name}: {self.words()}")

    def lines(self, name):
        """Runs of (slots back, watts). The first piece of the path is the sample in the legend."""
        path = self.element(name).find(".//" + SVG + "path").get("d")
        pieces = [piece for piece in path.split("M") if piece.strip()]
        return [[self.reading(pair) for pair in POINT.findall(piece)] for piece in pieces[1:]]

    def bands(self, name):
        """Runs of {slots back: (lowest, highest)}."""
        runs = []
        for polygon in list(self.element(name).iter(SVG + "polygon"))[1:]:
            run = {}
            for pair in POINT.findall(polygon.get("points")):
                back, watts = self.reading(pair)
                low, high = run.get(back, (watts, watts))
                run[back] = (min(low, watts), max(high, watts))
            runs.append(run)
        return runs


class SvgFile(Picture):
    def test_line_shows_every_mean_at_its_time(self):
        self.store({back: 200 + back for back in range(1, 50)})

        drawing = self.svg()

        self.assertEqual(drawing.lines("DC mean"), [[(back, 200 + back) for back in range(49, 0, -1)]])

    def test_band_reaches_from_minimum_to_maximum(self):
        self.store({back: 200 + back for back in range(1, 50)})

        drawing = self.svg()

        self.assertEqual(drawing.bands("DC minimum to maximum"),
                         [{back: (180 + back, 230 + back) for back in range(1, 50)}])

    def test_missing_readings_leave_line_and_band_open(self):
        self.store({back: None if 10 <= back < 20 else 250 + back % 2 for back in range(1, 40)})

        drawing = self.svg()

        backs = [[back for back, _ in run] for run in drawing.lines("DC mean")]
        self.assertEqual(backs, [list(range(39, 19, -1)), list(range(9, 0, -1))])
        self.assertEqual([sorted(run) for run in drawing.bands("DC minimum to maximum")],
                         [list(range(20, 40)), list(range(1, 10))])

    def test_missing_rows_leave_line_and_band_open(self):
        self.store({back: 250 for back in range(1, 40) if not 10 <= back < 20})

        drawing = self.svg()

        self.assertEqual([len(run) for run in drawing.lines("DC mean")], [20, 9])
        self.assertEqual([len(run) for run in drawing.bands("DC minimum to maximum")], [20, 9])

    def test_nothing_lies_outside_the_frame(self):
        self.store({back: None if back % 7 == 0 else 250 + back for back in range(1, 50)})

        drawing = self.svg()

        values = [watts for run in drawing.lines("DC mean") for _, watts in run]
        values += [watts for run in drawing.bands("DC minimum to maximum") for pair in run.values() for watts in pair]
        self.assertTrue(values)
        self.assertGreaterEqual(min(values), 231)
        self.assertLessEqual(max(values), 329)

    def test_reading_between_two_gaps_is_a_point_with_its_range(self):
        self.store({1: 250, 2: 251, 3: None, 4: 300, 5: None, 6: 252, 7: 253})

        drawing = self.svg()

        places = [drawing.reading(place) for use in drawing.root.iter(SVG + "use")
                  for place in POINT.findall(use.get("transform") or "")[:1]]
        strokes = [[drawing.reading(pair) for pair in POINT.findall(path.get("d"))]
                   for path in drawing.root.iter(SVG + "path") if path.get("opacity")]
        self.assertIn((4, 300), places)
        self.assertIn([(4, 280), (4, 330)], strokes)

    def test_side_without_any_reading_is_not_in_the_picture(self):
        self.store({1: 250, 2: 251})

        self.assertNotIn("AC mean", self.svg().words())

    def test_cap_in_force_is_a_line_across(self):
        self.store({1: 250, 2: 251})
        self.store_cap(300, on=1)

        drawing = self.svg()

        self.assertEqual(drawing.lines("Cap 300 W"), [[(MINUTES * 2, 300), (0, 300)]])

    def test_cap_that_is_off_or_not_set_is_not_drawn(self):
        self.store({1: 250, 2: 251})
        for watts, on in ((300, 0), (NO_POWER, 1)):
            self.store_cap(watts, on)

            self.assertFalse([word for word in self.svg().words() if word.startswith("Cap")])

    def test_cap_far_away_is_told_and_does_not_press_the_readings_flat(self):
        self.store({1: 250, 2: 251})
        self.store_cap(5000, on=1)

        drawing = self.svg()

        self.assertIn("Cap 5000 W, outside the picture", drawing.words())
        self.assertEqual(drawing.lines("DC mean"), [[(2, 251), (1, 250)]])
        self.assertEqual(drawing.lines("Cap 5000 W, outside the picture"), [])

    def test_title_and_axes_have_words_and_units(self):
        self.store({1: 250, 2: 251})

        words = self.svg().words()

        self.assertIn("System power, 30 min, entries of 30 s", words)
        self.assertIn("Power, W", words)
        self.assertIn("Time (UTC), 2023-11-14 21:43 to 2023-11-14 22:13", words)


class PngFile(Picture):
    def test_file_is_a_png_of_the_size_that_is_documented(self):
        self.store({1: 250, 2: 251})

        picture = self.ctl("power", "history", "--end", str(END), "--minutes", "30", "--png", "-")

        self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(struct.unpack(">II", picture[16:24]), (1600, 768))
        self.assertTrue(picture.endswith(b"IEND\xaeB`\x82"))


class Terminal(Picture):
    def shown(self, **variables):
        """What a terminal of 90 columns gets."""
        keyboard, screen = pty.openpty()
        subprocess.run(["stty", "cols", "90", "rows", "30"], stdin=screen, check=True)
        command = [os.environ["PWRMGTCTL"], "power", "history", "--end", str(END), "--minutes", "30", "--plot"]
        child = subprocess.Popen(command, env=self.environment | {"TERM": "xterm"} | variables, stdout=screen,
                                 stdin=subprocess.DEVNULL)
        os.close(screen)
        text = b""
        try:
            while more := os.read(keyboard, 65536):
                text += more
        except OSError:  # nobody holds the other end any more
            pass
        os.close(keyboard)
        self.assertEqual(child.wait(timeout=120), 0)
        return text.decode()

    def test_colours_where_somebody_looks_on(self):
        self.store({back: 250 + back for back in range(1, 50)})

        text = self.shown()

        self.assertIn("\x1b[", text)
        widths = [len(re.sub(r"\x1b\[[\d;]*m", "", line)) for line in text.splitlines()[2:]]
        self.assertGreater(max(widths), 80)
        self.assertLessEqual(max(widths), 90)

    def test_no_colours_where_they_are_not_wanted(self):
        self.store({back: 250 + back for back in range(1, 50)})

        self.assertNotIn("\x1b", self.shown(NO_COLOR="1"))


if __name__ == "__main__":
    unittest.main()

"""Tests script/layers on small trees of its own: python3 layers_test.py PATH-OF-LAYERS"""
import os
import subprocess
import sys
import tempfile
import unittest

TABLE = """
| Room | May include | Why |
|---|---|---|
| `low/` | nothing | |
| `high/` | `low/`, `side/public/` | |
| `side/` | `low/` | |
| `tests/` | everything | |
"""


class Layers(unittest.TestCase):
    def check(self, files, table=TABLE):
        """Returns exit status and output for a tree of these files and a good one in each room."""
        tree = {"docs/architecture.md": table, "low/Low.h": "", "high/High.h": '#include "low/Low.h"\n',
                "side/Own.h": "", "side/public/Side.h": '#include "low/Low.h"\n', **files}
        with tempfile.TemporaryDirectory() as root:
            for path, text in tree.items():
                place = os.path.join(root, path)
                os.makedirs(os.path.dirname(place), exist_ok=True)
                with open(place, "w", encoding="utf-8") as file:
                    file.write(text)
            run = subprocess.run([sys.executable, LAYERS, "--root", root], text=True, capture_output=True)
        return run.returncode, run.stdout + run.stderr

    def assert_refused(self, files, message, table=TABLE):
        status, output = self.check(files, table)
        self.assertEqual(status, 1, output)
        self.assertIn(message, output)

    def assert_accepted(self, files):
        status, output = self.check(files)
        self.assertEqual((status, output), (0, "layers: 3 passed, 0 failed "
                                               "(includes, circles, names in comments and documents)\n"))

    def test_tree_that_keeps_the_table_passes(self):
        self.assert_accepted({"tests/Test.cpp": '#include "high/High.h"\n#include "side/Own.h"\n',
                              "high/A.cpp": '#include "side/public/Side.h"\n#include <vector>\n'})

    def test_include_that_is_not_granted_fails(self):
        self.assert_refused({"low/Bad.cpp": '\n#include "high/High.h"\n'}, "low/Bad.cpp:2: low/ may not include high/High.h")

    def test_header_beside_the_granted_folder_fails(self):
        self.assert_refused({"high/Bad.cpp": '#include "side/Own.h"\n'}, "high/ may not include side/Own.h")

    def test_include_of_a_missing_file_fails(self):
        self.assert_refused({"low/Bad.cpp": '#include "Low.h"\n'}, '"Low.h" does not exist')

    def test_platform_header_belongs_to_its_room(self):
        self.assert_refused({"host/quorvel.h": "", "low/Bad.c": "#include <quorvel.h>\n"},
                            "low/ may not include host/quorvel.h", TABLE + "| `host/` | nothing | |\n")

    def test_circle_of_includes_fails(self):
        table = TABLE.replace("| `low/` | nothing |", "| `low/` | everything |")
        self.assert_refused({"low/Bad.cpp": '#include "high/High.h"\n'}, "a circle between rooms by includes: high/ → low/",
                            table)

    def test_circle_in_the_table_fails(self):
        table = TABLE.replace("| `low/` | nothing |", "| `low/` | `side/` |")
        self.assert_refused({}, "a circle between rooms by the table", table)

    def test_dead_path_in_a_comment_fails(self):
        self.assert_refused({"low/A.cpp": "// See high/Gone.h.\n"}, "low/A.cpp:1: there is no high/Gone.h")
        self.assert_refused({"low/A.cpp": "/* x\n * low/Gone */\n"}, "low/A.cpp:2: there is no low/Gone")

    def test_dead_name_in_a_comment_fails(self):
        self.assert_refused({"low/A.cpp": "int a;  // as in Gone.cpp\n"}, "there is no Gone.cpp")

    def test_dead_name_in_a_document_fails(self):
        self.assert_refused({"docs/a.md": "See `Gone.def`,\nor gone.md."}, "docs/a.md:1: there is no Gone.def")
        self.assert_refused({"docs/a.md": "See `Low.h`,\nor gone.md."}, "docs/a.md:2: there is no gone.md")

    def test_dead_path_in_a_build_file_fails(self):
        self.assert_refused({"low/CMakeLists.txt": "# See high/Gone.h.\n"}, "low/CMakeLists.txt:1: there is no high/Gone.h")

    def test_names_that_exist_and_placeholders_pass(self):
        self.assert_accepted({"low/A.cpp": "// high/High.h, High.h, low/Low, low/*.h, low/<Object>.h, low/NAME, low/.\n"
                                           'const char* text = "// high/Gone.h";\n',
                              "docs/a.md": "In `high/` as architecture.md has it; /usr/low/Gone.h is the system's."})

    def test_tree_without_table_fails(self):
        self.assert_refused({}, "has no table of rooms", "nothing here")


if __name__ == "__main__":
    LAYERS = sys.argv.pop(1)
    unittest.main()

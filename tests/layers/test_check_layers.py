#!/usr/bin/env python3
"""Plants offences in a small tree and sees that the check of the floors tells each of them."""
import contextlib
import io
import os
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "cmake"))
sys.dont_write_bytecode = True
import check_layers  # noqa: E402

FLOORS = """
src/Platform
<Export.h>
<Low.h> src/Low        # a comment
<High.h> src/High src/Low/Lifted*
<io/*> src/io
"""
OURS = "#include <Infrastructure/OxaCore/%s>\n"


class CheckLayers(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.write("cmake/layers.txt", FLOORS)
        self.write(check_layers.PUBLIC + "Export.h", "#ifdef _WIN32\n#endif\n")
        self.write(check_layers.PUBLIC + "Low.h", OURS % "Export.h" + "#include <string>\n#include <boost/format.hpp>\n")
        self.write(check_layers.PUBLIC + "High.h", OURS % "Low.h")
        self.write(check_layers.PUBLIC + "io/Streams.h", OURS % "High.h")
        self.write("src/Platform/Clock.h", "")
        self.write("src/Platform/Linux/Clock.cpp", "#include <Platform/Clock.h>\n#include <unistd.h>\n")
        self.write("src/Low/Low.cpp", OURS % "Low.h" + '#include "Inner.h"\n#include <Platform/Clock.h>\n')
        self.write("src/Low/Inner.h", "")
        self.write("src/Low/LiftedHere.cpp", OURS % "High.h")

    def tearDown(self):
        self.folder.cleanup()

    def write(self, path, text):
        path = os.path.join(self.folder.name, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def run_check(self):
        with contextlib.redirect_stdout(io.StringIO()) as output:
            status = check_layers.main(self.folder.name)
        return status, output.getvalue()

    def assert_offence(self, text):
        status, output = self.run_check()
        self.assertEqual(1, status, output)
        self.assertIn(text, output)

    def test_a_clean_tree_passes(self):
        self.assertEqual((0, "9 files, 0 offences\n"), self.run_check())

    def test_an_upward_include_of_a_public_header(self):
        self.write(check_layers.PUBLIC + "Low.h", "\n" + OURS % "High.h")
        self.assert_offence("include/Infrastructure/OxaCore/Low.h:2: includes include/Infrastructure/OxaCore/High.h, "
                            "which stands above it (layers.txt:5 above 4)")

    def test_an_upward_include_of_a_source(self):
        self.write("src/Low/Low.cpp", OURS % "io/Streams.h")
        self.assert_offence("src/Low/Low.cpp:1: includes include/Infrastructure/OxaCore/io/Streams.h")

    def test_an_upward_include_by_a_path_from_src(self):
        self.write("src/High/Inner.h", "")
        self.write("src/Low/Low.cpp", '#include "High/Inner.h"\n')
        self.assert_offence("src/Low/Low.cpp:1: includes src/High/Inner.h")

    def test_the_seam_includes_nothing_of_ours(self):
        self.write("src/Platform/Clock.h", OURS % "Export.h")
        self.assert_offence("src/Platform/Clock.h:1: includes include/Infrastructure/OxaCore/Export.h")

    def test_a_file_of_a_folder_that_is_named_itself(self):
        self.write("src/Low/Low.cpp", '#include "LiftedHere.h"\n')
        self.write("src/Low/LiftedHere.h", "")
        self.assert_offence("src/Low/Low.cpp:1: includes src/Low/LiftedHere.h, which stands above it")

    def test_a_file_without_a_floor(self):
        self.write("src/Lost/Lost.cpp", "")
        self.assert_offence("src/Lost/Lost.cpp: stands on no floor of layers.txt")

    def test_a_circle_on_one_floor(self):
        self.write("src/Low/Inner.h", '#include "Other.h"\n')
        self.write("src/Low/Other.h", '#include "Inner.h"\n')
        self.assert_offence("circle: src/Low/Inner.h -> src/Low/Other.h -> src/Low/Inner.h")

    def test_a_public_header_with_a_private_one(self):
        self.write(check_layers.PUBLIC + "High.h", "#include <Platform/Clock.h>\n")
        self.assert_offence("High.h:1: is public and includes src/Platform/Clock.h, which is not installed")

    def test_a_system_header_outside_the_seam(self):
        self.write("src/Low/Inner.h", "#include <sys/types.h>\n")
        self.assert_offence("src/Low/Inner.h:1: includes the system header <sys/types.h>")

    def test_a_grammar_in_a_public_header(self):
        self.write(check_layers.PUBLIC + "High.h", "#include <boost/spirit/include/qi.hpp>\n")
        self.assert_offence("is public and includes <boost/spirit/include/qi.hpp>")

    def test_a_question_for_the_system(self):
        self.write("src/Low/Inner.h", "\n#if defined(__linux__)\n#endif\n")
        self.assert_offence("src/Low/Inner.h:2: asks for the system (__linux__)")

    def test_an_include_that_is_missing(self):
        self.write("src/Low/Low.cpp", '#include "Nowhere.h"\n')
        self.assert_offence("src/Low/Low.cpp:1: includes a file that isn't there")

    def test_a_comment_is_no_include(self):
        self.write("src/Low/Low.cpp", "// #include <unistd.h>\n/*\n#include <unistd.h>\n*/\n")
        self.assertEqual(0, self.run_check()[0])

    def test_an_item_on_two_floors(self):
        self.write("cmake/layers.txt", "src/Low\nsrc/Low\n")
        self.assertEqual((2, "layers.txt:2: 'src/Low' stands on two floors\n"), self.run_check())

    def test_an_empty_tree_is_no_success(self):
        for folder in ("include", "src"):
            shutil.rmtree(os.path.join(self.folder.name, folder))
        self.assertEqual((1, "0 files, 0 offences\n"), self.run_check())


if __name__ == "__main__":
    unittest.main()

"""Runs the example programs on the sample page and checks what they print.

    check_examples.py [Case]...     with SGBK_EXAMPLES, their folder, set

What is expected comes from the page by Python's codecs and HTML parser, or was written by hand.
"""

import html.parser
import os
import pathlib
import re
import subprocess
import unittest

HERE = pathlib.Path(__file__).parent
PAGE = (HERE / "page.big5.html").read_bytes().decode("cp950")

# Traditional, and what a reader of simplified Chinese expects.
LINES = {
    "舉頭望明月，低頭思故鄉。": "举头望明月,低头思故乡。",
    "感時花濺淚，恨別鳥驚心。": "感时花溅泪,恨别鸟惊心。",
    "五花馬，千金裘，呼兒將出換美酒，與爾同銷萬古愁。":
        "五花马,千金裘,呼儿将出换美酒,与尔同销万古愁。",
    "行有餘力，則以學文。": "行有余力,则以学文。",
}


class PageText(html.parser.HTMLParser):
    def __init__(self, page):
        super().__init__()
        self.text = ""
        self.feed(page)

    def handle_data(self, data):
        self.text += data


def run(program, text, *arguments, encoding="gbk"):
    """What the program prints for the text; arguments and output in GBK."""
    command = [os.path.join(os.environ["SGBK_EXAMPLES"], program)]
    done = subprocess.run(command + [a.encode("gbk") for a in arguments],
                          input=text.encode(encoding), capture_output=True, check=False)
    if done.returncode not in (0, 1):
        raise AssertionError(f"{program}: exit {done.returncode}: {done.stderr}")
    return done.stdout.decode("gbk")


def ideographs(text):
    return re.findall("[\u4e00-\u9fff]", text)


class NormalizePage(unittest.TestCase):
    def test_a_page_becomes_clean_simplified_lines(self):
        text = run("normalize_page", PAGE)
        lines = text.splitlines()
        self.assertEqual(lines[:3], ["唐诗与论语选 tang poems & analects", "唐诗三首",
                                     "【一】静夜思 李白(701-762)"])
        for expected in [*LINES.values(), '<论语> & "学记" · (c) 公有领域', "html 4.01 <br> $100 ~50%",
                         "中国 …… 5 × 7 = 35 ± 0", "重要!", "电脑网路资讯 (完)"]:
            self.assertIn(expected, text)
        self.assertFalse(re.search("[A-Z\u2500-\u25ff★☆]|  |[!．。]{9}|\n \\S| \n", text))

    def test_no_ideograph_is_lost_added_or_left_traditional(self):
        text = run("normalize_page", PAGE)
        source = PageText(PAGE).text
        self.assertEqual(len(ideographs(text)), len(ideographs(source)))
        # GB 2312 has the simplified characters only.
        self.assertEqual("".join(ideographs(text)).encode("gb2312", "ignore").decode("gb2312"),
                         "".join(ideographs(text)))
        kept = sum(a == b for a, b in zip(ideographs(text), ideographs(source)))
        self.assertGreater(kept, len(ideographs(text)) // 2)


class ToSimplified(unittest.TestCase):
    def test_five_encodings_of_a_page_give_one_text(self):
        expected = run("to_simplified", PAGE, "big5", encoding="cp950")
        self.assertEqual(len(expected), len(PAGE))
        for line in LINES.values():
            self.assertIn(line, expected)
        # HZ has no traditional characters, so its input is the text expected already.
        forms = {"gbk": (PAGE, "gbk"), "utf-8": (PAGE, "utf-8"), "ucs-2le": (PAGE, "utf-16-le"),
                 "hz": (expected.replace("·", "・"), "hz")}
        for name, (text, encoding) in forms.items():
            with self.subTest(name):
                self.assertEqual(run("to_simplified", text, name, encoding=encoding), expected)


class FindText(unittest.TestCase):
    def test_script_width_and_case_do_not_matter(self):
        found = run("find_text", PAGE, "学")
        self.assertEqual(len(found.splitlines()), PAGE.count("學"))
        number = 1 + PAGE[:PAGE.index("學而第一")].count("\n")
        self.assertIn(f"{number}:8: <h1>论语 学而第一</h1>\n", found)
        self.assertEqual(len(run("find_text", PAGE, "ｈＴＭＬ").splitlines()),
                         len(re.findall("html|ｈｔｍｌ", PAGE, re.I)))

    def test_an_exact_search_tells_the_scripts_apart(self):
        self.assertEqual(run("find_text", PAGE, "-x", "学"), "")
        self.assertEqual(len(run("find_text", PAGE, "-x", "學").splitlines()), PAGE.count("學"))


class FoldWidth(unittest.TestCase):
    LINE = "ＨＴＭＬ　４．０１　＜ｂｒ＞　＄１００　論語"

    def test_titles_are_cut_between_characters(self):
        for room in range(1, 40):
            cut = run("fold_width", self.LINE + "\n", "title", str(room)).rstrip("\n")
            self.assertLess(len(cut.encode("gbk")), room if room > 1 else 2)
            whole = "HTML 4.01 <br> $100 論語"
            if cut != whole:
                self.assertTrue(whole.startswith(cut.rstrip(".")) and (room < 4 or cut[-3:] == "..."))
        self.assertEqual(cut, whole)

    def test_markup_is_escaped_and_the_rest_folded(self):
        self.assertEqual(run("fold_width", self.LINE + "\n", "html"),
                         "HTML 4.01 &lt;br&gt; $100 論語\n")

    def test_big5_comes_back(self):
        text = "".join(LINES) + "\n"
        command = [os.path.join(os.environ["SGBK_EXAMPLES"], "fold_width"), "big5"]
        done = subprocess.run(command, input=text.encode("gbk"), capture_output=True, check=True)
        self.assertEqual(done.stdout.decode("big5"), text.replace("，", ","))


class PageLinks(unittest.TestCase):
    def test_links_within_the_site_with_the_text_that_is_read(self):
        page = """<h1>連結</h1>
            <ul><li><a class="x" href="poems.html#three">★　唐詩 &lt;三首&gt;</a>
            <li><a href="http://example.org/a.html">外部</a> <a href="https://x.example/b.html">B</a>
            <li><a href="cover.png">封面</a> <a name="here">學而</a>
            <li><a href="analects.html"><b>論</b>語&nbsp;&copy;&eacute &#x570B;&unknown;</a></ul>"""
        self.assertEqual(run("page_links", page),
                         "poems.html#three\t唐诗 <三首>\n"
                         "analects.html\t论语 (C)é 国&unknown;\n")


class CleanPage(unittest.TestCase):
    def run_bytes(self, program, page, *arguments):
        command = [os.path.join(os.environ["SGBK_EXAMPLES"], program), *arguments]
        return subprocess.run(command, input=page, capture_output=True, check=False)

    def test_every_encoding_gives_the_same_clean_page(self):
        done = self.run_bytes("clean_page", PAGE.encode("cp950"))
        text = done.stdout.decode("utf-8")
        self.assertRegex(done.stderr.decode(), r"\Afrom big5, 0 of \d{4} characters lost\n\Z")
        for line in LINES.values():
            self.assertIn(line, text)
        self.assertIn("charset=utf-8", text)
        self.assertEqual(text.count("\n"), PAGE.count("\n"))
        for codec, name in {"gbk": "gbk", "utf-16-be": "ucs-2be"}.items():
            self.assertEqual(self.run_bytes("clean_page", PAGE.encode(codec), name).stdout, done.stdout)

    def test_losses_are_listed(self):
        done = self.run_bytes("clean_page", b"ab\n\xa4\xa4\x81\x41\xff\n", "big5")
        self.assertEqual(done.stdout.decode("utf-8"), "ab\n中\n")
        self.assertEqual(done.stderr.decode().splitlines(), [
            "line 2: 81 41 undefined", "line 2: FF malformed", "from big5, 2 of 7 characters lost"])
        self.assertEqual(self.run_bytes("clean_page", b"", "utf-7").returncode, 2)

    def test_cpp_gives_what_c_gives(self):
        page = HERE / "page.big5.html"
        expected = self.run_bytes("clean_page", page.read_bytes()).stdout
        done = self.run_bytes("clean_pages", b"", page, page)
        self.assertEqual((done.stdout, done.stderr), (2 * expected, b""))


if __name__ == "__main__":
    unittest.main()

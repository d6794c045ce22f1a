"""The user guide: what it quotes the program shows, what the program shows it explains, and its page is whole."""

import base64
import hashlib
import html
import re
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import make_handbook  # noqa: E402

GUIDE = ROOT / "docs" / "anleitung.md"
FOLDERS = ("app", "base", "drive", "format", "job", "online", "packaging", "platform", "toolkit", "tools", "widgets",
           "window")
# What is quoted of others: of Windows, and what files end in.
OF_OTHERS = {
    "-setup.exe", ".deb", "Alle extrahieren", "Apps", "Datenträgerverwaltung", "Deinstallieren",
    "Der Computer wurde durch Windows geschützt", "Einstellungen", "Hardware sicher entfernen",
    "Laufwerkbuchstaben und -pfade ändern", "Trotzdem ausführen", "Weitere Informationen", "Wiederholen", "Ändern", "y",
}
# What is put together of several texts.
PUT_TOGETHER = {
    "Achtung: Firmware unvollständig": ("Achtung: ", "Firmware", " unvollständig ("),
    "Geprüft: 4 Dateien stimmen überein.": ("Geprüft: ", " Dateien stimmen überein."),
}
# Boxes that nobody sees: the program has no place for what they are about.
UNSEEN = {"Kein Wert eingegeben. Es wird autom. 20 minuten eingetragen"}


def joined(text):
    """The source with texts of several lines put together, as they are shown."""
    text = re.sub(r'"\s*\n\s*L?"|\\\n', "", text)
    text = text.replace(r"$\r$\n", " ")
    text = text.replace(r"\"", "'").replace(r"\n", " ").replace('""', "'")
    return re.sub(r"&(?=\w)", "", html.unescape(text))


def sources():
    files = [file for folder in FOLDERS for file in sorted((ROOT / folder).rglob("*"))
             if file.suffix in (".cpp", ".h", ".rc", ".ui", ".nsi", ".nsh")]
    names = " ".join(file.name for file in (ROOT / "data" / "program").iterdir())
    made = " fat32format.exe orvanta-usbtool.exe "
    return names + made + "\n".join(joined(file.read_text(encoding="utf-8")) for file in files)


def one_line(text):
    return re.sub(r"\s+", " ", text)


def quotes(text):
    """What stands in quotation marks, without the places of what differs each time."""
    for quote in re.findall("„([^„“]+)“", text):
        yield from (piece.strip() for piece in quote.split("…") if piece.strip())


class Page(HTMLParser):
    """The links, the places that they may lead to, and the pictures of a page."""

    def __init__(self, text):
        super().__init__()
        self.places, self.links, self.pictures = [], [], []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        if "id" in values:
            self.places.append(values["id"])
        if tag == "a":
            self.links.append(values["href"])
        if tag == "img":
            self.pictures.append(values)


class Text(unittest.TestCase):
    TEXT = one_line(GUIDE.read_text(encoding="utf-8"))
    SOURCES = sources()

    def test_what_it_quotes_stands_in_the_sources(self):
        shown = one_line(self.SOURCES)
        found = set(quotes(self.TEXT))
        self.assertGreater(len(found), 100)
        missing = {quote for quote in found - OF_OTHERS if quote not in shown}
        self.assertEqual({quote for quote in missing if not re.fullmatch(r"Laufzeitfehler '\d+'", quote)},
                         set(PUT_TOGETHER))
        for pieces in PUT_TOGETHER.values():
            self.assertEqual([piece for piece in pieces if f'"{piece}"' not in shown], [])
        self.assertEqual(sorted(OF_OTHERS - found), [], "not quoted any more")

    def test_a_quote_that_is_none_is_found(self):
        self.assertEqual(list(quotes("Wo „Das gibt es nicht … so“ steht")), ["Das gibt es nicht", "so"])
        self.assertNotIn("Das gibt es nicht", one_line(self.SOURCES))

    def test_every_box_and_state_is_explained(self):
        """The literals of the calls that show something, also where a name stands for them."""
        named = dict(re.findall(r'constexpr (?:const char\*|std::string_view) (\w+)\s*=\s*"([^"]+)";', self.SOURCES))
        calls = re.findall(r"\b(?:messageBox|showBusy|showOnlineState|showStickState|refuseUpdate|showText|showStickResult|"
                           r"joinLines|tellWhoIsAway)\(((?:[^()]|\([^()]*\))*)\)", self.SOURCES)
        texts = set()
        for call in calls:
            texts.update(re.findall(r'"([^"]+)"', call))
            texts.update(named[name] for name in re.findall(r"\w+", call) if name in named)
        texts = {one_line(text).strip() for text in texts}
        texts = {text for text in texts if len(text) > 4 and not text.endswith((".bmp", ".csv"))}
        texts = {text for text in texts if not re.match(r"\d\. ", text)}  # channels
        self.assertGreater(len(texts), 40)
        missing = {text for text in texts if not self.explains(text)}
        self.assertEqual(missing, UNSEEN)

    def explains(self, text):
        """A sentence of the program's may go on with what differs each time."""
        return text.strip(" :.…-") in self.TEXT

    def test_every_box_of_the_installer_is_explained(self):
        """But for the names that differ each time."""
        scripts = (ROOT / "packaging/windows").glob("*.ns[ih]")
        installer = "\n".join(joined(file.read_text(encoding="utf-8")) for file in scripts)
        boxes = re.findall(r'\b(?:Fail|FailToInstall|TakeTurn \S+|MessageBox [A-Z_|]+) *"([^"]+)"', installer)
        boxes = [one_line(box) for box in boxes if not box.startswith("${")]
        self.assertGreater(len(boxes), 5)
        pieces = {piece.strip() for box in boxes for piece in re.split(r"„[^“]*“|(?<=\.) ", box)}
        self.assertEqual({piece for piece in pieces if not self.explains(piece)}, set())

    def test_every_error_number_is_explained(self):
        numbers = dict(re.findall(r"(\w+) = (\d+),", (ROOT / "base/runtime_error.h").read_text(encoding="utf-8")))
        errors = re.findall(r'\{ErrorNumber::(\w+), "([^"]+)"', (ROOT / "base/runtime_error.cpp").read_text("utf-8"))
        self.assertEqual(len(errors), len(numbers))
        for name, description in errors:
            self.assertIn(f"„Laufzeitfehler '{numbers[name]}'“ {description} |", self.TEXT)

    def test_every_refusal_of_the_formatter_is_explained(self):
        formatter = joined((ROOT / "tools/fat32format/formatter.cpp").read_text(encoding="utf-8"))
        refusals = re.findall(r"Refusal\{Status::\w+,([^;]+)\};", formatter)
        self.assertGreater(len(refusals), 18)
        known = set(quotes(self.TEXT))
        for refusal in refusals:
            words = " ".join(re.findall(r'"([^"]*)"', refusal))
            if not words:
                continue  # a reason that is told elsewhere
            self.assertTrue(any(quote in words for quote in known if len(quote) > 5), words)


class Whole(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.target = Path(cls.folder.name)
        make_handbook.make(GUIDE, cls.target)
        cls.text = (cls.target / "Anleitung.html").read_text(encoding="utf-8")
        cls.page = Page(cls.text)

    def test_every_link_leads_somewhere(self):
        self.assertEqual(len(self.page.places), len(set(self.page.places)))
        self.assertGreater(len(self.page.links), 20)
        self.assertEqual([link for link in self.page.links if link.removeprefix("#") not in self.page.places], [])

    def test_the_contents_name_every_chapter(self):
        chapters = re.findall(r'<h2 id="([^"]+)"', self.text)[1:]
        contents = re.search(r"<ul>.*?</ul>", self.text, re.DOTALL)[0]
        self.assertEqual(re.findall(r'href="#([^"]+)"', contents), chapters)

    def test_pictures_are_there_and_described(self):
        shown = {picture["src"] for picture in self.page.pictures}
        self.assertEqual(shown, {f"Anleitung/{file.name}" for file in (self.target / "Anleitung").iterdir()})
        for picture in self.page.pictures:
            name = Path(picture["src"]).name
            self.assertEqual((self.target / picture["src"]).read_bytes(), (ROOT / "docs/pictures" / name).read_bytes())
            self.assertTrue(picture["alt"])

    def test_a_single_page_holds_its_pictures(self):
        with tempfile.TemporaryDirectory() as folder:
            make_handbook.make(GUIDE, Path(folder), single=True)
            self.assertEqual([file.name for file in Path(folder).iterdir()], ["Anleitung.html"])
            pictures = Page((Path(folder) / "Anleitung.html").read_text(encoding="utf-8")).pictures
        held = [base64.b64decode(picture["src"].removeprefix("data:image/png;base64,")) for picture in pictures]
        self.assertEqual(held, [(self.target / picture["src"]).read_bytes() for picture in self.page.pictures])

    def test_it_needs_nothing_from_elsewhere(self):
        self.assertNotRegex(self.text, r"<th></th>")
        self.assertNotRegex(self.text, r"<(script|link|iframe)|https?:|@import|url\(")

    def test_the_same_bytes_each_time(self):
        def sums(folder):
            return {file.relative_to(folder): hashlib.sha256(file.read_bytes()).hexdigest()
                    for file in folder.rglob("*") if file.is_file()}

        with tempfile.TemporaryDirectory() as other:
            (Path(other) / "Anleitung").mkdir()
            (Path(other) / "Anleitung" / "old.png").write_bytes(b"of an earlier text")
            make_handbook.make(GUIDE, Path(other))
            self.assertEqual(sums(Path(other)), sums(self.target))


if __name__ == "__main__":
    unittest.main()

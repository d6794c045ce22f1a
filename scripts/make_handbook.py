#!/usr/bin/python3
"""Makes the user guide a page for browsers: make_handbook.py SOURCE FOLDER

SOURCE is docs/anleitung.md. FOLDER gets Anleitung.html and a folder Anleitung with the pictures that the text shows,
byte for byte; pictures of an earlier text go. The same source makes the same bytes.
"""

import re
import shutil
import sys
from pathlib import Path

import markdown
from markdown.extensions.toc import TocExtension, slugify_unicode

PAGE = "Anleitung.html"
PICTURES = "Anleitung"
STYLE = Path(__file__).with_name("handbook.css")
FRAME = """<!DOCTYPE html>
<html lang="de">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<style>
{style}</style>
</head>
<body>
{body}
</body>
</html>
"""


def title_of(text):
    """Of the first heading."""
    return re.search(r"^# (.+)$", text, re.MULTILINE)[1]


def page_of(text):
    """The page, and the pictures that it shows as the text calls them."""
    pictures = re.findall(r"!\[[^\]]*\]\(([^)]+)\)", text)
    for picture in pictures:
        text = text.replace(f"]({picture})", f"]({PICTURES}/{Path(picture).name})")
    body = markdown.markdown(text, extensions=["tables", TocExtension(slugify=slugify_unicode)], output_format="html")
    # A table without a heading has an empty row in its place, which would be read out.
    body = re.sub(r"<thead>\s*<tr>\s*(?:<th></th>\s*)+</tr>\s*</thead>\n", "", body)
    return FRAME.format(title=title_of(text), style=STYLE.read_text(encoding="utf-8"), body=body), pictures


def make(source, folder):
    page, pictures = page_of(source.read_text(encoding="utf-8"))
    shutil.rmtree(folder / PICTURES, ignore_errors=True)
    (folder / PICTURES).mkdir(parents=True)
    for picture in pictures:
        shutil.copyfile(source.parent / picture, folder / PICTURES / Path(picture).name)
    (folder / PAGE).write_bytes(page.encode("utf-8"))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    make(Path(sys.argv[1]), Path(sys.argv[2]))

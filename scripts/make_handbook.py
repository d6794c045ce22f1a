#!/usr/bin/python3
"""Makes the user guide a page for browsers: make_handbook.py [--single] SOURCE FOLDER

SOURCE is docs/anleitung.md. FOLDER gets Anleitung.html and a folder Anleitung with the pictures that the text shows,
byte for byte; pictures of an earlier text go. With --single the page holds its pictures itself. The same source makes
the same bytes.
"""

import argparse
import base64
import re
import shutil
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


def make(source, folder, single=False):
    page, pictures = page_of(source.read_text(encoding="utf-8"))
    shutil.rmtree(folder / PICTURES, ignore_errors=True)
    folder.mkdir(parents=True, exist_ok=True)
    if not single:
        (folder / PICTURES).mkdir()
    for picture in pictures:
        shown = f"{PICTURES}/{Path(picture).name}"
        if single:
            data = base64.b64encode((source.parent / picture).read_bytes()).decode("ascii")
            page = page.replace(f'src="{shown}"', f'src="data:image/png;base64,{data}"')
        else:
            shutil.copyfile(source.parent / picture, folder / shown)
    (folder / PAGE).write_bytes(page.encode("utf-8"))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--single", action="store_true")
    parser.add_argument("source", type=Path)
    parser.add_argument("folder", type=Path)
    options = parser.parse_args()
    make(options.source, options.folder, options.single)


if __name__ == "__main__":
    main()

"""Renaming the stick."""

import images
from scenario import expect, expect_equal, scenario

TOO_LONG = "maximale Länge der Datenträgerbezeichnung ist 11 Zeichen"

# What is typed, and what may then stand in the root directory, in code page 850. FAT has capitals only.
# UDisks2 leaves the label to fatlabel, which in version 4.2 takes letters outside of ASCII for control characters and
# refuses them: then the label stays, without a word, as after any label that cannot be set.
LABELS = {"ABCDEFGHIJK": [b"ABCDEFGHIJK"], "kleinbuch": [b"KLEINBUCH  "],
          "Müll": ["MÜLL       ".encode("cp850"), b"KLEINBUCH  "], "": [None]}


def rename(program, text):
    program.enter_text("txtDT_Cap", text)
    program.click("Command1")
    program.windows()  # answered when the click has been handled


@scenario("8", "label: 11 characters, lower case, umlaut, empty, 12 characters")
def label(ring):
    image = ring.stick("stick", "VORHER", files={"DATA.BIN": b"data"})
    name = ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("VORHER")
    told = []
    for text, wanted in LABELS.items():
        rename(program, text)
        found = images.label(image)
        expect(found in wanted, f"label on the stick after {text!r}: {found}")
        expect(program.message() is None, f"a message after {text!r}")
        program.click("cmdSearch")
        program.windows()
        shown = program.text("txtDT_Cap")
        stored = (found or b"").decode("cp850").rstrip()
        expect_equal(shown, stored, f"label in the window after {text!r}")
        told.append(f"{text!r} -> {shown!r}")
    rename(program, "ZWÖLFBUCHSTA")
    box = program.wait_message()
    expect_equal((box["text"], box["icon"]), (TOO_LONG, 64), "message at 12 characters")
    program.answer()
    expect_equal(images.label(image), None, "label after the refused one")
    program.end()
    ring.guest.pull(name)
    expect_equal(images.check(image), "", "fsck.fat")
    expect_equal(images.files(image), {"DATA.BIN": b"data"}, "files")
    return ", ".join(told) + "; 12 characters refused"

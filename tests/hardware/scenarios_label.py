"""Renaming the stick."""

import images
from scenario import expect, expect_equal, scenario

TOO_LONG = "maximale Länge der Datenträgerbezeichnung ist 11 Zeichen"

REFUSED = "Der Stick hat diese Bezeichnung nicht angenommen und behält die alte."

# What is typed, and what may then stand in the root directory, in code page 850. FAT has capitals only. UDisks2 sets no
# letter outside of ASCII; the program writes those itself, on a device that only root gets without a password.
LABELS = {"ABCDEFGHIJK": b"ABCDEFGHIJK", "kleinbuch": b"KLEINBUCH  ", "Müll": "MÜLL       ".encode("cp850"), "": None}


def rename(program, text):
    program.enter_text("txtDT_Cap", text)
    program.click("Command1")
    program.settle()


@scenario("8", "label: 11 characters, lower case, umlaut that is refused, empty, 12 characters")
def label(ring):
    return rename_all(ring, ring.user, refused=["Müll"])


@scenario("8r", "label: the same as root, who may set the umlaut")
def label_as_root(ring):
    return rename_all(ring, ring.root, refused=[])


def rename_all(ring, agent, refused):
    image = ring.stick("stick", "VORHER", files={"DATA.BIN": b"data"})
    name = ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program(agent)
    program.wait_stick("VORHER")
    told = []
    before = images.label(image)
    for text, wanted in LABELS.items():
        rename(program, text)
        expect(program.message() is None, f"a message after {text!r}")
        is_told = program.get("txtDT_Cap")["toolTip"].startswith(REFUSED)
        expect_equal(is_told, text in refused, f"a refusal told after {text!r}")
        found = images.label(image)
        expect_equal(found, before if text in refused else wanted, f"label on the stick after {text!r}")
        before = found
        program.click("cmdSearch")
        program.settle()
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

"""A stick takes another one's place, which is its copy: same serial number, same volume, same label."""

import images
from guest_program import CONFIRMATION, SUCCESS
from scenario import expect, expect_equal, scenario
from scenarios_job import EARLIER, expect_files, expect_report, job_files
from server import FIRMWARE, FIRMWARE_NAME, slow

SERIAL = "COPIED"
SLOW_DOWNLOAD = slow(FIRMWARE, 50_000, 1)  # half a minute: long enough to pull one stick and plug another
OTHERS = {"BRIEF.TXT": b"of the other stick"}


class Pair:
    """A stick that is shown, and its copy with one more file."""

    def __init__(self, ring):
        self.ring = ring
        self.first = ring.stick("first", "ORVANTA", files=EARLIER)
        self.second = images.copy(self.first, ring.image("second"))
        images.put(self.second, OTHERS)
        self.name = ring.guest.plug(self.first, serial=SERIAL)
        ring.wait_known()

    def exchange(self):
        self.ring.guest.pull(self.name)
        self.ring.wait(lambda: not self.ring.root.run("ls /dev/sd* 2>/dev/null || true").strip(), "no stick")
        self.name = self.ring.guest.plug(self.second, serial=SERIAL)
        self.ring.wait_known()

    def pull(self):
        self.ring.guest.pull(self.name)

    def expect_untouched(self):
        self.pull()
        expect_files(self.second, EARLIER | OTHERS)
        expect_files(self.first, EARLIER)


def exchanged(ring):
    """While the question is open, then during a download; nobody tells the program."""
    pair = Pair(ring)
    program = ring.loaded_program(automatic=False)
    program.wait_stick("ORVANTA")
    program.click("cmdChoose")
    program.wait_message(title=CONFIRMATION)
    pair.exchange()
    program.answer("OK")
    expect_report(program, 71)
    pair.expect_untouched()

    pair = Pair(ring)
    ring.server.set(FIRMWARE_NAME + ".txt", SLOW_DOWNLOAD)
    program = ring.loaded_program(automatic=False)
    program.wait_stick("ORVANTA")
    program.confirm()
    program.wait_for("StatusBar1_2", "toolTip", "Firmwareupdate läuft...")
    pair.exchange()
    expect_report(program, 71)
    pair.expect_untouched()
    return "error 71 both times; both sticks as they were"


@scenario("18", "stick exchanged for a copy of it: question, download; user")
def exchanged_for_a_user(ring):
    return exchanged(ring)


@scenario("18a", "the same with an automounter")
def exchanged_beside_an_automounter(ring):
    ring.start_automounter()
    return exchanged(ring)


@scenario("19", "hidden, read-only files on the stick, read-only ones in the program folder")
def attributes(ring):
    old = {name: b"old" for name in ("autorun.inf", "orvantastick.ico")}
    image = ring.stick("stick", "ORVANTA", files=EARLIER | old | {"USB.ini": b"[Open]\r\nDir=Musik\r\n"})
    for name in old:
        images.run("mattrib", "-i", image, "+h", "+r", "+s", f"::/{name}")
    images.run("mattrib", "-i", image, "+r", "::/USB.ini")
    name = ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("ORVANTA")
    expect_equal(program.text("txtOpenPath"), "", "path of a profile that is read-only")
    ring.root.run(f"cd {program.folder} && for f in autorun.inf orvantastick.ico; do "
                  "cp $f new && chmod 444 new && mv new $f; done")  # the original is shared with other programs
    for _ in range(2):  # the copies must not be in the way of the next ones
        program.confirm()
        program.wait_message(title=SUCCESS)
        program.answer()
    program.end()
    ring.guest.pull(name)
    found = {name: images.attributes(image, name) for name in (*old, "USB.ini")}
    expect_equal(found, {"autorun.inf": "A", "orvantastick.ico": "A", "USB.ini": "AR"}, "attributes")
    expect_files(image, EARLIER | job_files() | {"USB.ini": b"[Open]\r\nDir=Musik\r\n"})
    expect(images.check(image) == "", "fsck.fat finds something")
    return f"attributes by then: {found}"

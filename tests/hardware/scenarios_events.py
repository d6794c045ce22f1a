"""Many plugs and pulls; and UDisks2 itself comes and goes."""

import math

from scenario import expect, expect_equal, scenario

EVENTS = 200
LARGEST_BURST = 10
STICKS = 4
WARM_UP = 40  # events before the memory is measured first; by half of them it has been once without a question
GROWTH = 512 * 1024  # bytes: of caches that fill; 4 KB lost with each event would be more


def dismiss_dialogs(program):
    """Several sticks are a question each time one arrives; there may be one for each event of a burst, and no more."""
    for _ in range(2 * LARGEST_BURST):
        if "frmAuswahl" not in program.windows():
            return
        program.click("cmdCancel")  # of the one on top: each event may have opened one over the others
        program.settle()
    raise AssertionError("the program asks again and again which stick is meant")


def table_of(program):
    return sorted(device for letter, device in program.letters().items() if letter not in "CZ")


def reality(ring, plugged):
    """The device nodes of the sticks, by their labels; None as long as the guest has not noticed everything."""
    devices = ring.root.request("links", folder="/dev/disk/by-label")["links"]
    return sorted(devices.values()) if devices.keys() == plugged.keys() else None


@scenario("15", f"{EVENTS} random plugs and pulls over {STICKS} sticks", long=True)
def bursts(ring):
    sticks = {f"BURST{number}": ring.stick(f"burst{number}", f"BURST{number}", size=64 * 1024**2)
              for number in range(STICKS)}
    program = ring.loaded_program()
    plugged = {}
    done = rounds = 0
    memory = math.inf

    def settled():
        dismiss_dialogs(program)
        wanted = reality(ring, plugged)
        return wanted is not None and table_of(program) == wanted

    while done < EVENTS:
        for _ in range(min(ring.random.randint(1, LARGEST_BURST), EVENTS - done)):
            label = ring.random.choice(list(sticks))
            if label in plugged:
                ring.guest.pull(plugged.pop(label))
            else:
                plugged[label] = ring.guest.plug(sticks[label], serial=label)
            done += 1
        rounds += 1
        if done >= EVENTS / 2:
            ring.start_automounter()  # from here on somebody else mounts them, too
        ring.wait(settled, f"the table after {done} events, with {sorted(plugged)} plugged", 90)
        if WARM_UP <= done <= EVENTS / 2:
            memory = min(memory, program.allocated())
    for name in plugged.values():
        ring.guest.pull(name)
    plugged.clear()
    ring.wait(settled, "the empty table")
    ring.wait(lambda: not ring.mounts(), "no mount that is left over")
    folders = ring.root.run("ls /media/stick 2>/dev/null || true").split()
    expect_equal(folders, [], "mount points that are left over")
    ring.wait(lambda: program.allocated() - memory <= GROWTH,
              f"what the program had allocated before, {memory / 1024:.0f} KB, and {GROWTH // 1024} KB at the most")
    growth = program.allocated() - memory
    program.wait_no_stick()
    program.end()
    return f"{done} events in {rounds} bursts; table right after each; memory {growth / 1024:+.0f} KB; no mounts left"


@scenario("16", "UDisks2 stopped and started again")
def service_restarts(ring):
    program = ring.loaded_program()
    ring.guest.plug(ring.stick("stick", "DIENST"))
    program.wait_stick("DIENST")
    ring.root.run("systemctl mask --runtime udisks2 && systemctl stop udisks2")
    try:
        program.wait_no_stick()
        program.click("cmdSearch")
        program.settle()
        expect_equal(program.text("StatusBar1_1"), "No Stick", "without the service")
    finally:
        ring.root.run("systemctl unmask --runtime udisks2 && systemctl start udisks2")
    program.wait_stick("DIENST")
    first = program.facts()["lblLW"]
    ring.root.run("systemctl restart udisks2")
    program.windows()
    program.wait_stick("DIENST")
    ring.root.run("systemctl stop udisks2")  # the bus starts it when somebody asks
    program.click("cmdSearch")
    program.wait_stick("DIENST")
    expect_equal(program.facts()["lblLW"], first, "letter of the stick")
    expect(program.status() is None, "the program has ended")
    program.end()
    return f"no stick without the service; back as {first} with it; three stops"

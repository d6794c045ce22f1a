"""Linux without what tells of its drives."""

import subprocess
import unittest

from case import WindowCase
from side_by_side import side_by_side

NO_STICK = "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an."
NO_BUS = ('USB-Sticks werden nicht erkannt: Der Systembus (D-Bus) ist nicht erreichbar. Starten Sie den Dienst '
          '"dbus".')
NO_SERVICE = 'USB-Sticks werden nicht erkannt: Der Dienst UDisks2 fehlt. Installieren Sie das Paket "udisks2".'


class MissingService(WindowCase):
    def expect_told(self, program, sentence):
        """In the tool tip, and once to whoever reads the standard error output."""
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.assertEqual(program.get("StatusBar1_1")["toolTip"], f"{NO_STICK}\n{sentence}")
        program.click("cmdSearch")
        program.windows()  # answered when the click has been handled
        self.assertIsNone(program.message())
        self.assertEqual(program.get("StatusBar1_1")["toolTip"], f"{NO_STICK}\n{sentence}")
        self.assertEqual(program.output().splitlines().count(f"orvanta-usbtool: {sentence}"), 1, program.output())
        self.close(program)

    def bus(self):
        """Address of a bus that has no services."""
        daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(daemon.stdout.close)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.kill)
        return daemon.stdout.readline().strip()

    def test_no_bus(self):
        self.expect_told(self.start(files={"Drives.ini": None}), NO_BUS)

    def test_no_service(self):
        program = self.start(files={"Drives.ini": None}, environment={"DBUS_SYSTEM_BUS_ADDRESS": self.bus()})
        self.expect_told(program, NO_SERVICE)

    def test_a_table_of_ones_own_needs_no_service(self):
        program = self.start(drives=self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.assertEqual(program.get("StatusBar1_1")["toolTip"], NO_STICK)
        self.assertNotIn("orvanta-usbtool:", program.output())
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()

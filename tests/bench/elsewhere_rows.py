"""What is measured under Wine and in the hardware ring's guest: these print their rows themselves."""

import os
import subprocess
import sys

from program import BUILD, ROOT


def rows_of(*command, **environment):
    output = subprocess.run(command, cwd=ROOT, env=os.environ | environment, check=True, stdout=subprocess.PIPE, text=True)
    return [line for line in output.stdout.splitlines() if line.startswith("| ")]


def left_out(what, why):
    print(f"{what}: not measured, {why}.", file=sys.stderr)
    return []


def under_wine(_):
    build = BUILD / "windows"
    if not (build / "program" / "orvanta-usbtool.exe").exists():
        return left_out("The program for Windows", "it has not been built (scripts/build.sh windows)")
    return rows_of("tests/bench/windows/run", USBTOOL_BUILD=str(build))


def in_the_guest(_):
    if os.geteuid() != 0:
        return left_out("The program in the guest", "which needs root")
    return rows_of("tests/hardware/run", "--bench")

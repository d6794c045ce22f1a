#!/usr/bin/env python3
"""Signs a program file in its place, with the command that SIGN_COMMAND holds: packaging/windows/sign.py FILE

"{}" in the command is the file; without it the file comes at the command's end. Without a command nothing is signed.
"""

import os
import shlex
import subprocess
import sys


def command():
    """The command's words; none when nothing is to be signed."""
    return shlex.split(os.environ.get("SIGN_COMMAND", ""))


def sign(file):
    words = command()
    if not words:
        return
    named = [word.replace("{}", str(file)) for word in words]
    subprocess.run(named if named != words else [*words, str(file)], check=True, stdout=sys.stderr)


if __name__ == "__main__":
    sign(*sys.argv[1:])

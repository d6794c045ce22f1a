"""What a desktop does in its user's session: mounts every volume that appears, as soon as UDisks2 tells of it."""

import re
import subprocess

APPEARED = re.compile(r"^\S*\s*Added (/org/freedesktop/UDisks2/block_devices/(\w+))|"
                      r"^\S*\s*/org/freedesktop/UDisks2/block_devices/(\w+): Added interface "
                      r"org\.freedesktop\.UDisks2\.Filesystem")
# The smallest program that can: a desktop starts none at all.
MOUNT = ["busctl", "call", "org.freedesktop.UDisks2", "/org/freedesktop/UDisks2/block_devices/",
         "org.freedesktop.UDisks2.Filesystem", "Mount", "a{sv}", "1", "auth.no_user_interaction", "b", "true"]


def main():
    print("watching", flush=True)
    with subprocess.Popen(["stdbuf", "-oL", "udisksctl", "monitor"], stdout=subprocess.PIPE, text=True) as monitor:
        for line in monitor.stdout:
            found = APPEARED.match(line)
            if found:
                device = found.group(2) or found.group(3)
                result = subprocess.run([*MOUNT[:3], f"{MOUNT[3]}{device}", *MOUNT[4:]], capture_output=True, text=True,
                                        check=False)
                print(line.strip(), "->", (result.stdout + result.stderr).strip(), flush=True)


if __name__ == "__main__":
    main()

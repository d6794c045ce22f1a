#!/usr/bin/env bash
# clang-format over every source of the repository, clang-tidy over the program's own; --all: over the tests, too,
# which takes as long again. The settings stand in the root.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format-14 --dry-run -Werror "${sources[@]}"
echo "clang-format: ${#sources[@]} files."

cmake --preset debug >/dev/null
# Generated headers (the windows' layouts) must be there before anything is analysed.
cmake --build --preset debug --target toolkit_backend_autogen >/dev/null
[ "${1-}" = --all ] && folders='' || folders='(app|online|drive|job|format|widgets|toolkit|platform|tools)/'
mapfile -t units < <(python3 - "$folders" <<'PY'
import json, os, re, sys
root = os.getcwd() + os.sep
commands = json.load(open("build/debug/compile_commands.json"))
names = {c["file"][len(root):] for c in commands if c["file"].startswith(root)}
print("\n".join(sorted(n for n in names if not n.startswith("build" + os.sep) and re.match(sys.argv[1], n))))
PY
)
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 1 clang-tidy-14 -p build/debug --quiet 2>/dev/null
echo "clang-tidy: ${#units[@]} sources."

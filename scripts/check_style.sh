#!/usr/bin/env bash
# clang-format and clang-tidy over every source of the repository; the settings stand in its root.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format-14 --dry-run -Werror "${sources[@]}"
echo "clang-format: ${#sources[@]} files."

cmake --preset debug >/dev/null
# Generated headers (the windows' layouts) must be there before anything is analysed.
cmake --build --preset debug --target toolkit_backend >/dev/null
mapfile -t units < <(python3 - <<'PY'
import json, os
root = os.getcwd() + os.sep
commands = json.load(open("build/debug/compile_commands.json"))
names = {c["file"] for c in commands if c["file"].startswith(root)}
print("\n".join(sorted(n for n in names if not n.startswith(root + "build" + os.sep))))
PY
)
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build/debug --quiet 2>/dev/null
echo "clang-tidy: ${#units[@]} sources."

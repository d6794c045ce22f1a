#!/usr/bin/env bash
# clang-format over every source of the repository, who includes whom (scripts/check_layers.py), clang-tidy over the
# program's own sources (scripts/tidy.py); --all: over the tests, too, which takes as long again. The settings stand in
# the root. The sources for Windows are analysed when there is a cross compiler (scripts/setup.sh windows).
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

# Every source, as git knows them; without git, or without the history, as they lie in the folder. git does not trust
# the files of another user, as in a container, unless it is told to.
list_sources() {
  local listed
  listed=$(git -c safe.directory="$PWD" ls-files '*.cpp' '*.h' 2>/dev/null) || listed=
  if [ -n "$listed" ]; then
    echo "$listed"
  else
    find . \( -path ./build -o -path './.?*' \) -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -printf '%P\n'
  fi
}

mapfile -t sources < <(list_sources)
# Without a name clang-format would read its input.
[ ${#sources[@]} -gt 0 ] || { echo "There are no sources in $PWD." >&2; exit 1; }
clang-format-14 --dry-run -Werror "${sources[@]}" </dev/null
echo "clang-format: ${#sources[@]} files."

scripts/check_layers.py

folders='(app|base|online|drive|job|format|widgets|window|toolkit|platform|tools)/'
windows_folders='(platform/windows|toolkit/win32|tools/fat32format/windows)/'
if [ "${1-}" = --all ]; then
  folders=
  windows_folders='(platform/windows|toolkit/win32|tools/fat32format/windows|tests/[a-z0-9]*/windows)/'
fi

# The compiler's own headers are another compiler's; clang has to be told the target and where the library's are.
windows_arguments() {
  echo --extra-arg=--target=x86_64-w64-mingw32
  x86_64-w64-mingw32-g++-posix -x c++ -E -v - 2>&1 </dev/null |
    sed -n '/^#include <\.\.\.>/,/^End of search list/s/^ //p' | grep -vE '/gcc/[^.]*/include(-fixed)?$' |
    sed 's/^/--extra-arg=-isystem/'
  # A HANDLE is a pointer by another name, and some numbers are documented to be one.
  echo --checks=-misc-misplaced-const,-performance-no-int-to-ptr
}

cmake --preset debug >/dev/null
# Generated headers (the windows' layouts) must be there before anything is analysed.
cmake --build --preset debug --target toolkit_backend_autogen >/dev/null
scripts/tidy.py build/debug "$folders"

if command -v x86_64-w64-mingw32-g++-posix >/dev/null; then
  # In a folder of its own, as tests may be built meanwhile.
  cmake --preset windows -B build/windows-style >/dev/null
  mapfile -t arguments < <(windows_arguments)
  scripts/tidy.py build/windows-style "$windows_folders" "${arguments[@]}"
else
  echo "clang-tidy: the sources for Windows are left out, there is no cross compiler."
fi

#!/usr/bin/env bash
# Installs what a task needs and this machine lacks: scripts/setup.sh GROUP...
# Groups: program, tests, style, windows, desktop, hardware, portability, makefiles, debian, packages. Every package the
# project uses is named here, once; README.md tells what each is for.
set -euo pipefail

declare -A packages=(
  [program]="g++ ccache cmake ninja-build qt6-base-dev libcurl4-openssl-dev libblkid-dev libpng-dev
             fonts-dejavu-core xdg-utils python3 python3-markdown"
  [tests]="libgtest-dev dbus curl mtools dosfstools e2fsprogs openssl strace xvfb"
  [style]="clang-format-14 clang-tidy-14"
  [windows]="g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth imagemagick"
  [desktop]="xvfb dbus libglib2.0-bin openbox xfwm4 xfconf tint2 sway grim wtype weston qt6-wayland qt6ct qt6-gtk-platformtheme
             at-spi2-core gir1.2-atspi-2.0 orca python3-gi python3-xlib python3-pil locales fonts-dejavu-core"
  [hardware]="qemu-system-x86 debootstrap dosfstools mtools exfatprogs ntfs-3g fdisk"
  [portability]="debootstrap clang-14"
  [debian]="git build-essential debhelper dpkg-dev"
  [packages]="lintian desktop-file-utils appstream man-db libxml2-utils polkitd debootstrap dbus xvfb weston qt6-wayland
              g++-mingw-w64-x86-64-posix nsis osslsigncode python3-yaml bubblewrap xdg-dbus-proxy"
  [makefiles]="make"
)

missing=()
for group in "$@"; do
  for package in ${packages[$group]:?"unknown group $group"}; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
  done
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "These packages are missing, and neither root nor sudo is at hand to install them." >&2
    exit 1
  fi
  as_root=(sudo)
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# Another package manager may be at work, as on a machine that has just been set up; this is how long it is waited for.
patience=900 # seconds

# apt itself waits for what dpkg locks, but not for its own lists and packages.
apt() {
  local end=$((SECONDS + patience))
  until "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C \
    apt-get -o DPkg::Lock::Timeout="$patience" "$@" >"$log" 2>&1; do
    grep -q '^E: Could not get lock' "$log" && [ "$SECONDS" -lt "$end" ] || return 1
    sleep 1
  done
}

if ! { apt update && apt install -y --no-install-recommends "${missing[@]}"; }; then
  cat "$log" >&2
  echo "The packages could not be installed: ${missing[*]}" >&2
  exit 1
fi

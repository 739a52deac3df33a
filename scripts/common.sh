# What the scripts share; sourced, not run. Prints one line a step and stops at the first failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build_packages=(g++ cmake ninja-build ccache pkg-config libsqlite3-dev libebook1.2-dev mdbtools-dev
  libcli11-dev libjpeg-dev nlohmann-json3-dev qt6-base-dev fonts-nanum libgtest-dev libgmock-dev libbenchmark-dev)

step() { printf '== %s\n' "$*"; }

die() {
  printf '%s\n' "$*" >&2
  exit 1
}

missing_packages() {
  local package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      printf '%s ' "$package"
  done
}

# Installs what is missing of the packages named, as root or through sudo.
install_packages() {
  local missing log
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  step "Installing: $missing"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "These packages are missing, and there is no sudo to install them: $missing"
    as_root=(sudo)
  fi
  log=$(mktemp)
  # shellcheck disable=SC2086  # the list is meant to be split
  if ! { "${as_root[@]}" apt-get update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing; } \
    >"$log" 2>&1; then
    tail -n 15 "$log" >&2
    rm -f "$log"
    die "These packages are missing and could not be installed: $(missing_packages "$@")"
  fi
  rm -f "$log"
}

# Configures (with the options that follow) and builds a preset; the build's output only when it fails.
build() {
  local preset=$1 log
  step "Building ($preset)"
  mkdir -p build
  log=build/$preset.log
  if ! { cmake --preset "$preset" "${@:2}" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    die "The build failed; all of it is in $log"
  fi
}

# For the tests on address books of the desktop.
book_packages=(evolution-data-server radicale dbus-daemon curl vdirsyncer python3-gi gir1.2-ebook-1.2)

windows_build_packages=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools libwine-dev)
windows_test_packages=(wine wine64 xvfb xserver-xephyr imagemagick debootstrap openssl sqlite3 p7zip-full python3)

# SQLite's amalgamation for the Windows tests, of the version and content that the lock names; its
# folder.
fetch_sqlite() {
  local folder=build/sqlite package integrity file
  read -r package integrity <tests/windows/sqlite.lock
  if [ "$(cat "$folder/lock" 2>/dev/null)" != "$package $integrity" ]; then
    command -v npm >/dev/null || install_packages npm >&2
    rm -rf "$folder"
    mkdir -p "$folder"
    file=$(cd "$folder" && npm pack "$package" --silent) || die "$package could not be fetched"
    [ "sha512-$(openssl dgst -sha512 -binary "$folder/$file" | base64 -w0)" = "$integrity" ] ||
      die "$package is not what tests/windows/sqlite.lock says"
    tar -xf "$folder/$file" -C "$folder"
    printf '%s %s' "$package" "$integrity" >"$folder/lock"
  fi
  printf '%s' "$PWD/$folder/package/deps/sqlite3"
}

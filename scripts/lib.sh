# shellcheck shell=bash disable=SC2034
# Shared by the scripts beside it: where the source is, and how missing packages get in.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
jobs=$(nproc)

# Debian packages by what they are for, so that nobody installs Wine to see the demo.
packages_of() {
  case $1 in
    build) echo g++ cmake ninja-build ccache libcli11-dev ;;
    test) echo libgtest-dev libgmock-dev python3 pkg-config unicode-data ;;
    sanitize) echo clang llvm libclang-rt-dev ;;
    windows) echo g++-mingw-w64-x86-64-posix googletest wine wine64 ;;
    windows32) echo g++-mingw-w64-i686-posix googletest ;;
    peers) echo libicu-dev libssl-dev libgmime-3.0-dev libglib2.0-dev zlib1g-dev bzip2 ncompress libbz2-dev libexpat1-dev libxml2-dev 7zip pkg-config ;;
    bench) echo libbenchmark-dev libbotan-2-dev libcrypto++-dev libdeflate-dev libisal-dev libpugixml-dev python3 pkg-config binutils; packages_of peers ;;
    format) echo clang-format ;;
    generate) echo python3 unicode-data locales libicu-dev npm ;;
    *) echo "unknown group of packages: $1" >&2; return 1 ;;
  esac
}

# install_groups GROUP...: installs what is missing; asks the network for nothing else.
install_groups() {
  local group package listed missing=()
  for group in "$@"; do
    listed=$(packages_of "$group")
    for package in $listed; do
      [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = 'install ok installed' ] ||
        missing+=("$package")
    done
  done
  [ ${#missing[@]} -eq 0 ] && return
  if ! command -v apt-get >/dev/null; then
    echo "Please install these (Debian names): ${missing[*]}" >&2
    return 1
  fi
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

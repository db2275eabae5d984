# shellcheck shell=bash disable=SC2034
# Sourced by run and check: what has to be installed, and installing it. Everything is in Debian 12.
# The window's own needs come with qt6-base-dev: its X plugin is part of libqt6gui6, which is loaded as a plugin and
# so is found only when the window opens. On Wayland the window is native where qt6-wayland is installed too; elsewhere
# it goes through the X server that every Wayland desktop has.

packages_for_running=(
  cmake ninja-build g++ pkg-config qt6-base-dev libpugixml-dev libsystemd-dev libcli11-dev libwebp-dev
  nlohmann-json3-dev zlib1g-dev libicu-dev fonts-inter)
packages_for_checking=(
  git python3 libgtest-dev libgmock-dev libbenchmark-dev clang clang-tidy clang-format libclang-rt-14-dev llvm
  dbus-bin dbus-daemon ccache xvfb xdotool libxcb1-dev)

# missing_packages PACKAGE...: those that are not installed, one a line.
missing_packages() {
  local installed
  installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
    sed -n 's/^installed //p') || true
  printf '%s\n' "$@" | grep -vxF -f <(printf '%s\n' "$installed") || true
}

# setup_packages LOG PACKAGE...: installs what is missing. Ends the program where that cannot be done.
setup_packages() {
  local log=$1
  shift
  command -v dpkg-query >/dev/null || return 0 # not Debian: the build says what it cannot find
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  if [ "$(id -u)" != 0 ]; then
    if ! sudo -n true 2>/dev/null; then
      echo "tallyforge: setup: needs the packages ${missing[*]}: run as root, or with a sudo that asks no password" >&2
      exit 1
    fi
    as_root=(sudo -n)
  fi

  echo "tallyforge: setup: installing ${missing[*]}" >&2
  mkdir -p "$(dirname "$log")"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300)
  local install=("${apt[@]}" install --no-install-recommends "${missing[@]}")
  # The package lists are fetched only where those that are there do not serve.
  if ! "${install[@]}" </dev/null >"$log" 2>&1; then
    if ! { "${apt[@]}" update && "${install[@]}"; } </dev/null >>"$log" 2>&1; then
      tail -n 20 "$log" >&2
      echo "tallyforge: setup: cannot install ${missing[*]}: see $log" >&2
      exit 1
    fi
  fi
}

# Shared by the scripts beside it; meant to be sourced.
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build_packages=(g++ cmake ninja-build pkg-config libboost-json1.81-dev libsqlite3-dev
  libcurl4-openssl-dev libssl-dev libnghttp2-dev libgdk-pixbuf-2.0-dev libgif-dev libcli11-dev libcpp-httplib-dev)
test_packages=(libgtest-dev libgmock-dev python3)
# Real windows and pages, and what tests show them on.
screen_packages=(libgtk-4-dev libwebkitgtk-6.0-dev xvfb xauth dbus dbus-x11 libglib2.0-bin xdotool openbox bubblewrap xdg-dbus-proxy
  fonts-dejavu-core fonts-noto-core fonts-droid-fallback fonts-nanum python3-dbusmock dunst xfce4-notifyd at-spi2-core
  xdg-desktop-portal xdg-desktop-portal-gtk libx11-dev)
benchmark_packages=(libbenchmark-dev nghttp2-server nghttp2-client)
# What tests with ordinary clients run on. Debian's npm brings hundreds of packages; one that is there already will do.
client_packages=()
command -v npm >/dev/null || client_packages=(nodejs npm ca-certificates)

# configure PRESET [OPTION…]: configures build/PRESET, with a compiler cache where one is installed.
configure() {
  local preset=$1
  shift
  local launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake --preset "$preset" "${launcher[@]}" "$@" >"/tmp/vorsel-configure-$$.log" 2>&1 || {
    cat "/tmp/vorsel-configure-$$.log" >&2
    return 1
  }
  rm -f "/tmp/vorsel-configure-$$.log"
}

# build PRESET [TARGET…]: builds quietly; the whole output follows when it fails.
build() {
  local preset=$1
  shift
  local targets=()
  [[ $# -gt 0 ]] && targets=(--target "$@")
  echo "Building ($preset)"
  if [[ -t 1 ]]; then
    cmake --build "build/$preset" "${targets[@]}"
  else
    cmake --build "build/$preset" "${targets[@]}" >"build/$preset/build.log" 2>&1 || {
      grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "build/$preset/build.log" >&2
      return 1
    }
  fi
}

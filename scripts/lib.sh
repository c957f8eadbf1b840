# Shared by scripts/test, scripts/demo and scripts/python: installs what is missing, builds, and sets
# up the environment in which the built package and the simulated host come first on the path.
# Sourced, not run.

COBALTRIG_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
COBALTRIG_BUILD=${COBALTRIG_BUILD:-$COBALTRIG_ROOT/build}
COBALTRIG_PYTHON=/usr/bin/python3

# Everything comes from Debian's packages.
COBALTRIG_DEBS=(
  cmake g++ make
  qtbase5-dev pybind11-dev python3-dev
  python3-pyside2.qtcore python3-pyside2.qtgui python3-pyside2.qtwidgets python3-pyside2.qttest
  python3-pytest python3-pytestqt libgtest-dev xvfb xauth
)

cobaltrig_install_deps() {
  local missing=()
  local pkg
  for pkg in "${COBALTRIG_DEBS[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing Debian packages: ${missing[*]}" >&2
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -q >&2
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q "${missing[@]}" >&2
}

cobaltrig_build() {
  cmake -S "$COBALTRIG_ROOT" -B "$COBALTRIG_BUILD" -DPython_EXECUTABLE=$COBALTRIG_PYTHON \
    ${COBALTRIG_CMAKE_ARGS[@]+"${COBALTRIG_CMAKE_ARGS[@]}"} >/dev/null &&
    cmake --build "$COBALTRIG_BUILD" -j "$(nproc)" -- --no-print-directory >&2
}

cobaltrig_env() {
  export PYTHONPATH="$COBALTRIG_BUILD/package:$COBALTRIG_ROOT/hostsim${PYTHONPATH:+:$PYTHONPATH}"
  export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
  export PYTHONDONTWRITEBYTECODE=1
}

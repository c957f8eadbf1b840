# Shared by scripts/test, scripts/demo and scripts/python: installs what is missing, builds, and sets
# up the environment in which the built package and the simulated host come first on the path.
# Sourced, not run.
#
# Two builds come from the one source tree:
#   Qt 5.15 + PySide2 (the default, hosts 14-15): build/, Debian's /usr/bin/python3 and its packages.
#   Qt 6 + PySide6 (--qt6, hosts 16 and later): build-qt6/. Debian 12 has the Qt 6 headers but no
#     PySide6, so a virtual environment of /usr/bin/python3 inside build-qt6/ holds the PySide6 wheel
#     pinned to what those hosts ship, with pytest and pytest-qt. The system Python is never written.
# A script calls `cobaltrig_pick_qt "$@"` first; a leading --qt6 picks the Qt 6 build, and the
# arguments after it are left in COBALTRIG_ARGS.

COBALTRIG_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
COBALTRIG_QT=5

# Hosts 16.x ship PySide6 6.5.3; the Essentials wheel carries QtCore, QtGui, QtWidgets and QtTest,
# which is all the add-on and its tests use. pytest and pytest-qt match Debian 12's versions.
COBALTRIG_QT6_PIP=(PySide6-Essentials==6.5.3 shiboken6==6.5.3 pytest==7.2.1 pytest-qt==4.2.0)

# Everything else comes from Debian's packages.
COBALTRIG_DEBS=(
  cmake g++ make ccache
  qtbase5-dev pybind11-dev python3-dev
  python3-pyside2.qtcore python3-pyside2.qtgui python3-pyside2.qtwidgets python3-pyside2.qttest
  python3-pytest python3-pytestqt libgtest-dev xvfb xauth
)
COBALTRIG_QT6_DEBS=(qt6-base-dev python3-venv libgl-dev libxkbcommon0 libegl1 libfontconfig1 libdbus-1-3)

cobaltrig_pick_qt() {
  if [ "${1:-}" = "--qt6" ]; then
    COBALTRIG_QT=6
    shift
  fi
  COBALTRIG_ARGS=("$@")
  if [ "$COBALTRIG_QT" = 6 ]; then
    COBALTRIG_BUILD=${COBALTRIG_BUILD:-$COBALTRIG_ROOT/build-qt6}
    COBALTRIG_PYTHON=$COBALTRIG_BUILD/venv/bin/python
    COBALTRIG_DEBS+=("${COBALTRIG_QT6_DEBS[@]}")
  else
    COBALTRIG_BUILD=${COBALTRIG_BUILD:-$COBALTRIG_ROOT/build}
    COBALTRIG_PYTHON=/usr/bin/python3
  fi
}

cobaltrig_install_deps() {
  local missing=()
  local pkg
  for pkg in "${COBALTRIG_DEBS[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
  done
  if [ ${#missing[@]} -ne 0 ]; then
    echo "Installing Debian packages: ${missing[*]}" >&2
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -q >&2
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q "${missing[@]}" >&2
  fi
  [ "$COBALTRIG_QT" = 6 ] && cobaltrig_qt6_venv
  return 0
}

# The Qt 6 build's Python: a virtual environment of Debian's interpreter (the module's ABI is that
# interpreter's) with the pinned wheels. A stamp records what was installed, so a changed pin
# reinstalls and an unchanged one costs nothing.
cobaltrig_qt6_venv() {
  local venv=$COBALTRIG_BUILD/venv
  local want="${COBALTRIG_QT6_PIP[*]}"
  if [ -x "$venv/bin/python" ] && [ "$(cat "$venv/.cobaltrig-pins" 2>/dev/null)" = "$want" ]; then
    return 0
  fi
  echo "Installing into $venv: $want" >&2
  mkdir -p "$COBALTRIG_BUILD"
  /usr/bin/python3 -m venv --clear "$venv" >&2
  "$venv/bin/python" -m pip install -q --disable-pip-version-check "${COBALTRIG_QT6_PIP[@]}" >&2
  echo "$want" >"$venv/.cobaltrig-pins"
}

cobaltrig_build() {
  local launcher=()
  # ccache turns the rebuilds of unchanged sources (another build folder, a fresh clone) into copies.
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    export CCACHE_BASEDIR=$COBALTRIG_ROOT
    # Debug builds name their folder in the debug information; a hit from another checkout only
    # points a debugger at that checkout's sources.
    export CCACHE_NOHASHDIR=1
  fi
  /usr/bin/cmake -S "$COBALTRIG_ROOT" -B "$COBALTRIG_BUILD" -DPython_EXECUTABLE=/usr/bin/python3 \
    -DCOBALTRIG_QT="$COBALTRIG_QT" "${launcher[@]}" \
    ${COBALTRIG_CMAKE_ARGS[@]+"${COBALTRIG_CMAKE_ARGS[@]}"} >/dev/null &&
    /usr/bin/cmake --build "$COBALTRIG_BUILD" -j "$(nproc)" -- --no-print-directory >&2
}

cobaltrig_env() {
  export COBALTRIG_BUILD
  export PYTHONPATH="$COBALTRIG_BUILD/package:$COBALTRIG_ROOT/hostsim${PYTHONPATH:+:$PYTHONPATH}"
  export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
  export PYTHONDONTWRITEBYTECODE=1
  # pytest-qt drives the binding of the build under test.
  if [ "$COBALTRIG_QT" = 6 ]; then export PYTEST_QT_API=pyside6; else export PYTEST_QT_API=pyside2; fi
}

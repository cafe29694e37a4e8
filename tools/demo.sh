#!/bin/sh
# Runs the demo: the Connection Manager stand-in (when it is built) and the host
# on the sample archive in the user's data folder, created on first start.
# Without a display it runs headless under Xvfb, writes a screenshot of the host
# once its workbench dock is ready, and says where the image is.
#
#   tools/demo.sh [BUILD_DIR [HOST ARGUMENTS...]]
#   DEMO_SCREENSHOT=file.png picks the image (default: demo.png here)
set -eu
BUILD_DIR=${1:-build}
[ $# -gt 0 ] && shift
BIN="$BUILD_DIR/bin"
if [ ! -x "$BIN/orvexhost" ]; then
  echo "demo: $BIN/orvexhost is missing; build first (make build)." >&2
  exit 1
fi
if [ "$(id -u)" = 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi

# No display: run this script again inside an Xvfb session of its own, so that
# the Connection Manager and the host share it.
if [ -z "${DISPLAY:-}" ] && [ -z "${ORVEX_DEMO_HEADLESS:-}" ]; then
  shot=$(realpath -m "${DEMO_SCREENSHOT:-demo.png}")
  echo "demo: no display, running headless under Xvfb; the screenshot goes to $shot"
  rc=0
  ORVEX_DEMO_HEADLESS=1 DEMO_SCREENSHOT="$shot" \
    xvfb-run -a -s "-screen 0 1600x1000x24" sh "$0" "$BUILD_DIR" "$@" || rc=$?
  if [ "$rc" = 0 ]; then
    echo "demo: done; the screenshot of the host is $shot"
  else
    echo "demo: the host failed (exit code $rc); see its message above." >&2
  fi
  exit "$rc"
fi

# The stand-in serves the same archive, as the same user, as the host: it gets
# the host's --archive and --user options.
start_connection_manager() {
  n=$#
  prev=""
  for arg in "$@"; do
    case "$prev" in --archive|--user) set -- "$@" "$prev" "$arg" ;; esac
    case "$arg" in --archive=*|--user=*) set -- "$@" "$arg" ;; esac
    prev=$arg
  done
  shift "$n"
  "$BIN/orvexconnectionmanager" "$@" &
}

if [ -x "$BIN/orvexconnectionmanager" ]; then
  start_connection_manager "$@"
  cm_pid=$!
  trap 'kill "$cm_pid" 2>/dev/null || true' EXIT
fi

if [ -n "${ORVEX_DEMO_HEADLESS:-}" ]; then
  export QTWEBENGINE_CHROMIUM_FLAGS="${QTWEBENGINE_CHROMIUM_FLAGS:---disable-gpu}"
  "$BIN/orvexhost" --screenshot "$DEMO_SCREENSHOT" "$@"
else
  "$BIN/orvexhost" "$@"
fi

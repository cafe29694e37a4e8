#!/bin/sh
# Runs the demo: the Connection Manager stand-in and the host on a sample archive.
# Without a display it runs headless under Xvfb and writes a screenshot.
set -eu
BUILD_DIR=${1:-build}
BIN="$BUILD_DIR/bin"
if [ ! -x "$BIN/orvexhost" ]; then
  echo "demo: everything is built (see $BIN), but the demo host 'orvexhost' is not there yet."
  echo "demo: the plugin is $BIN/liborvexworkbenchplugin.so; 'make test' runs its tests."
  exit 0
fi
[ "$(id -u)" = 0 ] && export QTWEBENGINE_DISABLE_SANDBOX=1
cm_pid=""
if [ -x "$BIN/orvexconnectionmanager" ]; then
  "$BIN/orvexconnectionmanager" &
  cm_pid=$!
  trap 'kill $cm_pid 2>/dev/null || true' EXIT
fi
if [ -n "${DISPLAY:-}" ]; then
  "$BIN/orvexhost"
else
  shot="${DEMO_SCREENSHOT:-demo.png}"
  echo "demo: no display, running headless; the screenshot goes to $shot"
  xvfb-run -a -s "-screen 0 1600x1000x24" "$BIN/orvexhost" --screenshot "$shot"
fi

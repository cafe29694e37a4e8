#!/bin/sh
# Runs one GUI test executable headless on an Xvfb display of its own.
# ORVEX_TEST_ON_DISPLAY=1 runs it on the current display instead (for watching it).
if [ "$(id -u)" = 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi
export QTWEBENGINE_CHROMIUM_FLAGS="${QTWEBENGINE_CHROMIUM_FLAGS:---disable-gpu --disable-background-networking}"
if [ -n "$ORVEX_TEST_ON_DISPLAY" ] && [ -n "$DISPLAY" ]; then
  exec "$@"
fi
exec xvfb-run -a -s "-screen 0 1600x1200x24" "$@"

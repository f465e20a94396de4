# Sourced by the scripts that need a screen: a private Xvfb server.
#
#   start_xvfb WIDTHxHEIGHT [LOG]
#
# Starts Xvfb on a free display, exports DISPLAY and sets xvfb_pid (the
# caller stops it). Returns 1 when the server is not up within 10 s.
start_xvfb() {
  local size=$1 log=${2:-/dev/null} numfile _
  numfile=$(mktemp)
  Xvfb -displayfd 5 -screen 0 "${size}x24" -nolisten tcp 5>"$numfile" >"$log" 2>&1 &
  xvfb_pid=$!
  for _ in $(seq 100); do
    if [ -s "$numfile" ]; then
      DISPLAY=":$(head -n1 "$numfile")"
      export DISPLAY
      rm -f "$numfile"
      return 0
    fi
    sleep 0.1
  done
  rm -f "$numfile"
  return 1
}

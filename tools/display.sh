# Sourced by scripts that need a display where there is none: a virtual one with a window manager,
# which ends with the script, and a way to wait until the program shows a picture.

started=()  # process ids to end when the script ends

end_started() {
  local i
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do
    kill -TERM "${started[i]}" 2>/dev/null || true
    kill -CONT "${started[i]}" 2>/dev/null || true  # a test may have stopped it
  done
  wait 2>/dev/null || true
}
trap end_started EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# open_display WIDTHxHEIGHT: sets and exports DISPLAY, which has GLX unless TESSARY_TEST_GLX is "none".
# Its keys don't repeat: on a busy machine one would be held down for longer than a hand meant to.
open_display() {
  local answer number settings glx=+
  [ "${TESSARY_TEST_GLX:-}" != none ] || glx=-
  answer=$(mktemp)
  Xvfb -displayfd 3 -screen 0 "$1x24" ${glx}extension GLX +extension RANDR -nolisten tcp -r \
    3>"$answer" >/dev/null 2>&1 &
  started+=("$!")
  for _ in $(seq 600); do
    number=$(cat "$answer")
    [ -n "$number" ] && break
    sleep 0.05
  done
  rm -f "$answer"
  [ -n "$number" ] || { echo "Xvfb did not start" >&2; return 1; }
  export DISPLAY=:$number
  unset WAYLAND_DISPLAY
  export QT_QPA_PLATFORM=xcb
  # A window that is no longer minimised would fly to its place, and stand beside it meanwhile.
  settings=$(mktemp)
  sed 's|\(<animateIconify>\)yes|\1no|' /etc/xdg/openbox/rc.xml >"$settings"
  openbox --config-file "$settings" >/dev/null 2>&1 &
  started+=("$!")
  # Windows that are mapped before the window manager is there end up anywhere. On a busy machine
  # it has been seen to give up.
  for _ in $(seq 600); do
    # The list of its windows is the last that it makes before it takes new ones.
    if xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -q 'window id'; then
      export WINDOW_MANAGER_PID=${started[-1]}
      rm "$settings"
      return
    fi
    if ! kill -0 "${started[-1]}" 2>/dev/null; then
      openbox --config-file "$settings" >/dev/null 2>&1 &
      started[-1]=$!
    fi
    sleep 0.05
  done
  rm "$settings"
  echo "openbox did not start" >&2
  return 1
}

# wait_for_picture PID FILE SECONDS: until the screen shows more colours than an empty window has,
# then leaves a screenshot in FILE. Fails when the process ends or the time is over.
wait_for_picture() {
  local end=$((SECONDS + $3)) colours
  mkdir -p "$(dirname "$2")"
  while [ $SECONDS -lt $end ]; do
    kill -0 "$1" 2>/dev/null || { echo "The program ended before it showed a picture" >&2; return 1; }
    import -silent -window root "$2" 2>/dev/null || true
    colours=$(identify -format %k "$2" 2>/dev/null || echo 0)
    [ "$colours" -gt 3000 ] && return 0
    sleep 0.3
  done
  echo "No picture on screen after $3 seconds; the last screenshot is $2" >&2
  return 1
}

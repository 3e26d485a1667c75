# The same camera in this program and in two other viewers, one after the other: what a frame on the
# screen costs the processor, and how many of them there are.
screen_size=1600x1000 # the whole of the larger picture
. "$(dirname "$0")/desk.sh"

seconds=30

cpu_of() { awk '{ print $14 + $15 }' "/proc/$1/stat"; } # in ticks of 10 ms, of all its threads

# measure NAME COMMAND...: shows the camera's picture with the command. Sets shown[NAME], pictures, and
# cost[NAME], microseconds of the processor for each. One that is too slow for this machine to show any
# has shown none, at any cost.
declare -A shown cost
measure() {
  local name=$1 before
  shift
  "$@" >"$out/$name-$size.log" 2>&1 &
  local viewer=$!
  if [ "$name" = tessary ]; then
    need "$name, $size: it is live" is_live $first_picture
  else
    is_live $first_picture || echo "# $name, $size: no four pictures in $first_picture s"
  fi
  sleep 5
  before=$(cpu_of $viewer)
  shown[$name]=$("$SCREEN" shown "$screen" $seconds) || true
  cost[$name]=$((($(cpu_of $viewer) - before) * 10000))
  if [ "${shown[$name]}" -gt 0 ]; then cost[$name]=$((cost[$name] / shown[$name])); fi
  echo "# $name, $size: ${shown[$name]} pictures in $seconds s, ${cost[$name]} us of the processor each"
  photo "$name-$size"
  kill $viewer
  wait $viewer 2>/dev/null || true
  need "$name, $size: it lets the camera go" "$SCREEN" gone "$screen" $answer
}

# What the program would have remembered.
remember() {
  mkdir -p "$HOME/.config/tessary"
  printf '[General]\nuniqueID=%s\nvideoType=1684890161\nwidth=%d\nheight=%d\n' "$unique_id" \
    "${size%x*}" "${size#*x}" >"$HOME/.config/tessary/tessary.ini"
}

for size in 640x480 1280x720; do
  start_microscope microscope --sizes $size
  need "$size: the microscope is plugged in" wait_for $answer video_node_is_there
  if [ -z "${unique_id:-}" ]; then
    mark
    start_program
    need "the microscope is seen" wait_for $first_picture camera_is_seen 41312
    unique_id=$(sed -n 's/.*uniqueID://p' "$program_log" | head -n 1)
    kill "$program"
    wait "$program" || true
  fi
  remember
  measure tessary "$TESSARY"
  measure ffplay ffplay -hide_banner -loglevel error -fflags nobuffer -f v4l2 -input_format mjpeg \
    -video_size $size -i /dev/video0
  measure guvcview guvcview -d /dev/video0 -x $size -f MJPG -a none
  for peer in ffplay guvcview; do
    check "$size: a frame costs less than in $peer" test "${cost[tessary]}" -lt "${cost[$peer]}"
    check "$size: no fewer frames are shown, within two of a hundred, than in $peer" test $((shown[tessary] * 100)) -ge $((shown[$peer] * 98))
  done
  kill "$microscope_pid"
  wait "$microscope_pid" 2>/dev/null || true
  need "$size: the microscope is gone" wait_for $answer test ! -e /dev/video0
done
finish

# The whole program, $TESSARY, on the kernel's USB video driver: chosen once, live from then on, and
# live again by itself after everything that a cable or a camera can do to it. What is on screen is
# proven by reading the number in each picture's strip off the virtual screen.
. "$(dirname "$0")/checks.sh"

screen=/tmp/screen/Xvfb_screen0
program_log=$out/tessary.log
first_picture=120   # seconds; generous, for the machine is emulated
next_picture=90
answer=60
photos=0

show_what_went_wrong() {
  photo failure
  tail -n 8 "$program_log" 2>/dev/null | sed 's/^/#   tessary: /'
  tail -n 4 "$out/microscope.log" | sed 's/^/#   /'
  kernel_log | tail -n 4 | sed 's/^/#   kernel: /'
}

# photo NAME: a screenshot, numbered in order.
photo() {
  photos=$((photos + 1))
  "$SCREEN" save "$screen" "$out/$(printf %02d $photos)-$1.ppm"
}

microscope_says() { says "$out/microscope.log" "$1" "$microscope_mark"; }
program_says() { says "$program_log" "$1" "$program_mark"; }
camera_is_seen() { program_says "modelID:UVC Camera VendorID_1374 ProductID_$1"; }
# From now on, only what is said from now on counts.
mark() {
  microscope_mark=$(lines "$out/microscope.log")
  program_mark=$(lines "$program_log")
}
count_said() { tail -n "+$((program_mark + 1))" "$program_log" | grep -Ec -- "$1" || true; }

no_stream_was_asked_for() { ! microscope_says "streaming"; }
is_alive() { ! has_ended "$program"; }
key() { xdotool key --clearmodifiers "$@"; }

start_program() {
  "$TESSARY" 2>>"$program_log" &
  program=$!
}
window() { xdotool search --onlyvisible --class tessary 2>/dev/null | head -n 1; }
has_window() { [ -n "$(window)" ]; }
windows() { xdotool search --onlyvisible --class tessary 2>/dev/null | wc -l; }
sheet_is_up() { [ "$(windows)" -gt 1 ]; }
sheet_is_down() { [ "$(windows)" -eq 1 ]; }
open_sheet() { key ctrl+m && wait_for $answer sheet_is_up; }

# Four different pictures, so that at least three of them are new.
is_live() {
  local numbers
  local enough=0
  numbers=$("$SCREEN" moving "$screen" 4 "$1") || enough=1
  echo "#   pictures seen: ${numbers:-none}"
  return $enough
}
picture_is_gone() { is_alive && "$SCREEN" gone "$screen" $answer; }

# Where the picture is; the window fits it exactly, and keeps its size when it goes.
find_picture() { read -r _ picture_left picture_bottom < <("$SCREEN" number "$screen"); }
# The status text stands 15 pixels from the left and 28 above the bottom.
status_is_blank() {
  "$SCREEN" plain "$screen" $((picture_left + 15)) $((picture_bottom + 1 - 28)) 150 19
}
status_is_shown() { ! status_is_blank; }

# ended_well SECONDS: whether the program ends by itself, and without an error.
ended_well() {
  wait_for "$1" has_ended "$program" || return 1
  local status=0
  wait "$program" || status=$?
  echo "#   exit status $status"
  [ $status -eq 0 ]
}

# fault STEP COMMAND: the microscope is told to spoil something, and the picture comes back.
fault() {
  mark
  tell microscope "$2"
  check "$1: it happened" wait_for $next_picture microscope_says "${3:-$2 is over}"
  check "$1: the program is alive" is_alive
  check "$1: live again by itself" is_live $next_picture
}

: >"$program_log"
[ -x "${TESSARY:-}" ] || { fails "TESSARY names the program"; finish; }

mkdir -p /tmp/screen
Xvfb :7 -screen 0 1024x768x24 -fbdir /tmp/screen +extension GLX -nolisten tcp >"$out/Xvfb.log" 2>&1 &
export DISPLAY=:7 QT_QPA_PLATFORM=xcb LIBGL_ALWAYS_SOFTWARE=1 NO_AT_BRIDGE=1
screen_is_up() { xdotool getdisplaygeometry >/dev/null 2>&1; }
need "the virtual screen is up" wait_for $answer screen_is_up
openbox >"$out/openbox.log" 2>&1 &

video_node_is_there() { [ -c /dev/video0 ]; }
start_microscope microscope --sizes 640x480
need "the microscope is plugged in" wait_for $answer video_node_is_there

# 1. Nothing is remembered: the microscope is chosen once
mark
start_program
need "the window shows" wait_for $first_picture has_window
check "the microscope is seen" wait_for $answer camera_is_seen 41312
check "and the camera is left alone" no_stream_was_asked_for
need "Ctrl+M opens the microscope sheet" open_sheet
check "which offers one size" program_says "onSelMicroscope: 1 0"
photo sheet
key Return
need "Return closes it" wait_for $answer sheet_is_down

# 2. It is live
need "the program starts the stream" wait_for $first_picture microscope_says "streaming MJPEG 640x480"
check "in the chosen format" program_says "matchDeviceFormat OK: 646D6231, 640x480"
need "it is live" is_live $first_picture
need "and stays in its place" wait_for $answer find_picture
check "with the status in its corner" wait_for $answer status_is_shown
photo live

# 3. Unplugged and plugged in again
for turn in once twice thrice; do
  mark
  tell microscope unplug
  need "unplugged $turn: the picture goes and the program stays" picture_is_gone
  check "unplugged $turn: the status text goes too" wait_for $answer status_is_blank
  photo unplugged
  tell microscope plug
  check "plugged in $turn: live again by itself" is_live $first_picture
done
photo replugged

# 4. Faults
fault "damaged pictures" "corrupt 20"
check "damaged pictures: the program has skipped some" wait_for $answer program_says "[1-9][0-9]* undecodable"
fault "cut pictures" "truncate 20"
fault "failing transfers" "error 20"
check "failing transfers: the program has restarted the stream" program_says "restarting it"
fault "a camera that pauses" "freeze 3000" "told to freeze"
photo after-faults

# 5. A second camera that is no microscope is not listed, and a second microscope is
#
# "onSelMicroscope: SIZES DEFAULT" is logged whenever the sheet's list is made anew and whenever
# another entry is chosen in it; the number of sizes tells which.
mark
need "the sheet opens again" open_sheet
start_microscope webcam --port 1 --product 270f --name Webcam --serial W1 --sizes 640x480,1280x720
check "a camera with product number 9999 is seen" wait_for $answer camera_is_seen 9999
key alt+m
key End
photo only-microscopes
key Escape
check "the sheet closes" wait_for $answer sheet_is_down
check "and listed that camera nowhere" test "$(count_said onSelMicroscope)" -eq 1
mark
start_microscope second --port 2 --product a19b --name Second --serial S2
check "a second microscope is seen" wait_for $answer camera_is_seen 41371
need "the sheet opens a third time" open_sheet
check "with the open microscope chosen" program_says "onSelMicroscope: 1 0"
key alt+m
key Down
check "and lists the second one next" wait_for $answer program_says "onSelMicroscope: 3 1"
key Down
photo two-microscopes
key Escape
check "the sheet closes" wait_for $answer sheet_is_down
check "and listed those two only" test "$(count_said onSelMicroscope)" -eq 2
tell webcam quit
tell second quit
check "the picture was live all along" is_live $next_picture

# 6. The end, and another start
check "the program is alive" is_alive
mark
key ctrl+q
check "Ctrl+Q ends it with status 0" ended_well $answer
check "it delivered pictures" program_says "stream ended.* [1-9][0-9]* frames delivered"
mark
start_program
need "started again, it opens the microscope by itself" is_live $first_picture
photo second-start
key alt+F4
check "closing the window ends it with status 0" ended_well $answer
check "the kernel met no trouble of its own" kernel_is_well
finish

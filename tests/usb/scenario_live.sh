# The whole program on the kernel's USB video driver: chosen once, live from then on, and live again
# by itself after everything that a cable or a camera can do to it.
. "$(dirname "$0")/desk.sh"

# Where the picture is; the window fits it exactly, and keeps its size when it goes.
find_picture() { read -r _ picture_left picture_bottom < <("$SCREEN" number "$screen"); }
# The status text stands 15 pixels from the left and 28 above the bottom.
status_is_blank() {
  "$SCREEN" plain "$screen" $((picture_left + 15)) $((picture_bottom + 1 - 28)) 150 19
}
status_is_shown() { ! status_is_blank; }

# fault STEP COMMAND: the microscope is told to spoil something, and the picture comes back.
fault() {
  mark
  tell microscope "$2"
  check "$1: it happened" wait_for $next_picture microscope_says "${3:-$2 is over}"
  check "$1: the program is alive" is_alive
  check "$1: live again by itself" is_live $next_picture
}

start_microscope microscope --sizes 640x480
need "the microscope is plugged in" wait_for $answer video_node_is_there

# 1. Nothing is remembered: the microscope is chosen once
mark
start_program
need "the window shows" wait_for $first_picture has_window
check "the microscope is seen" wait_for $answer camera_is_seen 41312
check "and the camera is left alone" no_stream_was_asked_for
choose_microscope
check "it offered one size" program_says "onSelMicroscope: 1 0"

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

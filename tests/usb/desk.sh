# Sourced by the scenarios of the whole program, $TESSARY: a virtual screen with a window manager, a
# microscope to plug in, and the program, judged by what is on screen and by what it says. What is on
# screen is proven by reading the number in each picture's strip off the virtual screen, of
# $screen_size.
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

start_program() { # start_program [OPTION...]
  "$TESSARY" "$@" 2>>"$program_log" &
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

# ended_well SECONDS: whether the program ends by itself, and without an error.
ended_well() {
  wait_for "$1" has_ended "$program" || return 1
  local status=0
  wait "$program" || status=$?
  echo "#   exit status $status"
  [ $status -eq 0 ]
}

: >"$program_log"
[ -x "${TESSARY:-}" ] || { fails "TESSARY names the program"; finish; }

mkdir -p /tmp/screen
Xvfb :7 -screen 0 "${screen_size:-1024x768}x24" -fbdir /tmp/screen +extension GLX -nolisten tcp >"$out/Xvfb.log" 2>&1 &
export DISPLAY=:7 QT_QPA_PLATFORM=xcb LIBGL_ALWAYS_SOFTWARE=1 NO_AT_BRIDGE=1
screen_is_up() { xdotool getdisplaygeometry >/dev/null 2>&1; }
need "the virtual screen is up" wait_for $answer screen_is_up
openbox >"$out/openbox.log" 2>&1 &

video_node_is_there() { [ -c /dev/video0 ]; }

# choose_microscope: nothing is remembered, so the sheet offers the microscope, and Return takes it.
choose_microscope() {
  need "Ctrl+M opens the microscope sheet" open_sheet
  photo sheet
  key Return
  need "Return closes it" wait_for $answer sheet_is_down
}

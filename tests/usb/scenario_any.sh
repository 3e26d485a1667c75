# Cameras that are no microscopes: with --any-camera one is listed, live and remembered, USB or not, with
# compressed pictures or not; one whose pictures are too small is said to be so.
. "$(dirname "$0")/desk.sh"

no_video_node_is_there() { ! video_node_is_there; }
is_a_still_of() { # is_a_still_of WxH: one was saved, and there was none before
  local stills
  stills=$(find "$folder" -name '*.jpg')
  [ "$(identify -format '%wx%h' $stills 2>/dev/null)" = "$1" ]
}
# Another camera in the place of the one before, and the program on it.
open_other_camera() { # open_other_camera NAME OPTION...
  tell "$camera" quit
  need "the camera is taken away" wait_for $answer no_video_node_is_there
  camera=$1
  start_microscope "$@"
  need "another one is plugged in" wait_for $answer video_node_is_there
  mark
  start_program --any-camera
  need "the window shows" wait_for $first_picture has_window
  choose_microscope
}

camera=microscope
folder=$out/stills
mkdir -p "$folder" ~/.config/tessary
printf '[General]\nimagePath=%s\n' "$folder" >~/.config/tessary/tessary.ini
ends() { key ctrl+q && ended_well $answer; }

start_microscope microscope --product 270f --name Webcam --serial W1 --sizes 640x480
need "a camera with product number 9999 is plugged in" wait_for $answer video_node_is_there

# 1. Without the option
mark
start_program
need "the window shows" wait_for $first_picture has_window
check "the camera is seen" wait_for $answer camera_is_seen 9999
need "Ctrl+M opens an alert" open_sheet
photo no-microscope
key Return
check "and it was listed nowhere" test "$(count_said onSelMicroscope)" -eq 0
check "the program ends" ends

# 2. With it
mark
start_program --any-camera
need "with --any-camera the window shows" wait_for $first_picture has_window
choose_microscope
check "the camera of one size is offered" program_says "onSelMicroscope: 1 0"
need "and is live" is_live $first_picture
modprobe vivid n_devs=1 node_types=0x1
check "a camera that is not on USB is seen" wait_for $answer program_says "modelID:vivid"
start_microscope second --port 2 --product a19b --name Second --serial S2 --sizes 640x480,1280x720
check "a microscope beside it too" wait_for $answer camera_is_seen 41371
mark
need "the sheet opens" open_sheet
key alt+m
key End
check "and lists more than one" wait_for $answer test "$(count_said onSelMicroscope)" -ge 1
photo any-camera
key Escape
check "the sheet closes" wait_for $answer sheet_is_down
tell second quit
modprobe -r vivid
check "the picture was live all along" is_live $next_picture
check "the program ends" ends
mark
start_program --any-camera
need "started again, it opens the camera by itself" is_live $first_picture
check "and has touched none of its controls" test "$(grep -Ec 'is -?[0-9]+$' "$out/microscope.log")" -eq 0
check "the program ends" ends

# 3. Other pictures
open_other_camera raw --product 270f --name Raw --serial R1 --sizes 640x480 --coding yuyv
check "a camera without compression is opened as it is" \
  wait_for $answer program_says "matchDeviceFormat OK: 79757673, 640x480"
check "and is live" is_live $first_picture
check "the program ends" ends
open_other_camera small --product 270f --name Small --serial T1 --sizes 320x240
check "a camera of 320x240 is opened" \
  wait_for $answer program_says "matchDeviceFormat OK: 646D6231, 320x240"
check "its pictures are said to be too small" wait_for $first_picture program_says "too small"
photo too-small
key space
check "and can be saved all the same" wait_for $answer is_a_still_of 320x240
check "the program ends" ends
check "the kernel met no trouble of its own" kernel_is_well
finish

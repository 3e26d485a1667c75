# What can be adjusted of a camera: its controls are set over the kernel's driver, given back when it
# comes again, and one that hangs holds nobody up; its button is a key.
. "$(dirname "$0")/desk.sh"

has_controls_window() { xdotool search --onlyvisible --name '^Camera Controls' >/dev/null 2>&1; }
has_no_controls_window() { ! has_controls_window; }
control_is() { [ "$(v4l2-ctl -d /dev/video0 --get-ctrl "$1" 2>/dev/null)" = "$1: $2" ]; }
ends() { key ctrl+q && ended_well $answer; }

start_microscope microscope --product 270f --name Webcam --serial W1 --sizes 640x480
need "a camera is plugged in" wait_for $answer video_node_is_there
start_program --any-camera
need "the window shows" wait_for $first_picture has_window
choose_microscope
need "it is live" is_live $first_picture

# 1. Controls
mark
key ctrl+e
need "Ctrl+E opens the controls" wait_for $answer has_controls_window
sleep 2
photo controls
key space # the menu of the exposure modes
sleep 1
key Up
key Return
need "the exposure is manual" wait_for $answer microscope_says "exposure mode is 1"
sleep 1
key Tab Tab # past its way back, to the slider of what it ruled
key Right
need "and its time can be set" wait_for $answer microscope_says "exposure time is 158"
photo manual
check "the driver says so too" control_is exposure_time_absolute 158
v4l2-ctl -d /dev/video0 --set-ctrl brightness=20
sleep 2
photo brightness-from-elsewhere
check "the picture is live meanwhile" is_live $next_picture

mark
tell microscope unplug
need "unplugged, the picture goes" picture_is_gone
tell microscope plug
need "plugged in, it is live again" is_live $first_picture
check "and its exposure is as it was set" wait_for $answer control_is exposure_time_absolute 158
check "by the program, the mode first" microscope_says "exposure mode is 1"
check "what another program set is not" control_is brightness 0

# 2. One that hangs
mark
tell microscope "stall 4000"
wait_for $answer microscope_says "told to stall"
xdotool search --onlyvisible --name '^Camera Controls' windowactivate
sleep 1
key Tab Tab
key Right # keeps the camera for four seconds
key Escape
window_answers() { wait_for 3 has_no_controls_window && ! microscope_says "exposure time is"; }
check "the window answers while a control hangs" window_answers
check "which comes to its end" wait_for $answer microscope_says "exposure time is 159"
tell microscope "stall 0"
check "the picture comes back" is_live $first_picture

# 3. The button
python3 - <<'P' >/tmp/button.txt &
import glob, struct
for path in sorted(glob.glob("/sys/class/input/event*/device/name")):
    if "Webcam" in open(path).read():
        node = "/dev/input/" + path.split("/")[4]
with open(node, "rb", buffering=0) as events:
    print("listening", flush=True)
    while True:
        _, _, kind, code, value = struct.unpack("llHHi", events.read(24))
        print(kind, code, value, flush=True)
P
reader=$!
wait_for $answer says /tmp/button.txt listening
tell microscope press
check "the microscope's button is the camera key" wait_for $answer says /tmp/button.txt "^1 212 1$"
kill "$reader"

check "the program ends" ends
mark
start_program --any-camera
need "started again, it is live" is_live $first_picture
check "and its exposure is as it was set" wait_for $answer control_is exposure_time_absolute 159
check "the program ends" ends
check "the kernel met no trouble of its own" kernel_is_well
finish

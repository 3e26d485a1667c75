# Proves the lab itself: that the virtual microscope is a camera to the kernel's driver, and that
# each fault arrives there as what it is meant to be. No program of ours is involved but the lab's.
. "$(dirname "$0")/checks.sh"

camera=/dev/video0

show_what_went_wrong() {
  tail -n 5 "$out/microscope.log" | sed 's/^/#   microscope: /'
  kernel_log | tail -n 5 | sed 's/^/#   kernel: /'
}

is_property() { udevadm info --query=property "$camera" | grep -qx "$1=$2"; }
is_there() { [ -c "$camera" ] && is_property ID_VENDOR_ID 055e; }
is_gone() { [ ! -e "$camera" ]; }
offers() { v4l2-ctl -d "$camera" --list-formats-ext | grep -q "$1"; }
microscope_says() { says "$out/microscope.log" "$1" "${mark:-0}"; }

# take SECONDS COUNT FILE [OPTION...]: COUNT buffers of the stream, as they come.
take() {
  local limit=$1 count=$2 file=$3
  shift 3
  timeout "$limit" v4l2-ctl -d "$camera" --verbose --stream-mmap=4 --stream-count="$count" \
    --stream-to="$file" "$@" >"$file.txt" 2>&1
}
mjpeg=(--set-fmt-video=width=640,height=480,pixelformat=MJPG)
yuyv=(--set-fmt-video=width=640,height=480,pixelformat=YUYV)

# How many of the virtual microscope's own pictures the stream in FILE holds whole.
whole_pictures() {
  python3 - "$1" "$PICTURES" <<'P'
import pathlib, sys
stream = pathlib.Path(sys.argv[1]).read_bytes()
def originals(kind): return {path.read_bytes() for path in (pathlib.Path(sys.argv[2]) / kind).iterdir()}
head = b"\xff\xd8\xff\xe0"
if stream.startswith(head):
    sent = originals("640x480.mjpeg")
    came = [head + rest for rest in stream.split(head)[1:]]
else:
    sent = originals("640x480.yuyv")
    size = 640 * 480 * 2
    came = [stream[at:at + size] for at in range(0, len(stream), size)]
print(sum(picture in sent for picture in came))
P
}
has_whole() { [ "$(whole_pictures "$1")" -ge "$2" ]; }
has_fewer_whole_than() { [ "$(whole_pictures "$1")" -lt "$2" ]; }

# with_fault COMMAND SECONDS COUNT FILE: takes COUNT pictures, the first of which COMMAND spoils.
with_fault() {
  mark=$(lines "$out/microscope.log")
  tell microscope "$1"
  wait_for 30 microscope_says "told to $1" && take "$2" "$3" "$4" "${mjpeg[@]}"
}
# Of forty pictures with ten spoilt; a slow machine loses some of either kind.
enough_whole=28

start_microscope microscope
need "the kernel has a camera with the microscope's numbers" wait_for 60 is_there
check "its product number is a160" is_property ID_MODEL_ID a160
check "its serial number is TS0001" is_property ID_SERIAL_SHORT TS0001
check "it offers MJPEG" offers "MJPG"
check "it offers YUYV" offers "YUYV"
check "it offers 1920x1080" offers "1920x1080"

check "a stream of MJPEG comes" take 60 20 /tmp/mjpeg "${mjpeg[@]}"
check "and every picture of it is whole" has_whole /tmp/mjpeg 20
check "a stream of YUYV comes" take 60 4 /tmp/yuyv "${yuyv[@]}"
check "and every picture of it is whole" has_whole /tmp/yuyv 4

check "a stream with damaged pictures comes" with_fault "corrupt 10" 60 40 /tmp/corrupt
check "ten were damaged" microscope_says "corrupt 10 is over"
check "some of them came" has_fewer_whole_than /tmp/corrupt 40
check "all others are whole" has_whole /tmp/corrupt $enough_whole

check "a stream with cut pictures comes" with_fault "truncate 10" 60 40 /tmp/truncate
check "ten were cut" microscope_says "truncate 10 is over"
check "some of them came" has_fewer_whole_than /tmp/truncate 40
check "all others are whole" has_whole /tmp/truncate $enough_whole

freeze_holds_back() {
  local begin=$SECONDS
  with_fault "freeze 10000" 90 20 /tmp/freeze && [ $((SECONDS - begin)) -ge 8 ]
}
check "a freeze holds the stream back, which then goes on by itself" freeze_holds_back
check "and every picture of it is whole" has_whole /tmp/freeze 20

# The driver gives up a transfer that failed, and a stream all of whose transfers failed is silent.
error_silences() { ! with_fault "error 5" 20 20 /tmp/error; }
check "failing transfers silence the stream" error_silences
check "after five of them failed" microscope_says "error 5 is over"
check "a new stream comes" take 60 20 /tmp/again "${mjpeg[@]}"

# The stream's program is held while the camera goes, and meets the fact later: the kernel's driver
# (6.1) crashes when a node is closed at the very moment at which its camera disappears.
unplugged_streams_end() {
  local taker
  mark=$(lines "$out/microscope.log")
  v4l2-ctl -d "$camera" --stream-mmap=4 --stream-to=/dev/null "${mjpeg[@]}" >/tmp/unplug.txt 2>&1 &
  taker=$!
  wait_for 30 microscope_says "streaming MJPEG" || return 1
  kill -STOP "$taker"
  tell microscope unplug
  wait_for 30 is_gone && udevadm settle
  kill -CONT "$taker"
  wait_for 30 has_ended "$taker"
}
check "unplugging ends a stream" unplugged_streams_end
check "and takes the camera away" is_gone
tell microscope plug
check "plugging brings it back" wait_for 60 is_there
check "and it streams" take 60 20 /tmp/replug "${mjpeg[@]}"
tell microscope quit
check "the microscope ends" wait_for 30 has_ended "$microscope_pid"
check "the kernel met no trouble of its own" kernel_is_well
finish

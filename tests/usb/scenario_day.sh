# A whole day with the program, as tests/day spends it with the simulated microscope: choose, calibrate,
# measure, save, record, quit, and find things next morning as they were left.
screen_size=1600x1000
. "$(dirname "$0")/desk.sh"

start_microscope microscope --sizes 640x480,1280x720
need "the microscope is plugged in" wait_for $answer video_node_is_there

export XDG_CONFIG_HOME=/tmp/config TESSARY_SLOW_MACHINE=1
check "a day's work" python3 -B "$(dirname "$0")/../day/day.py" "$TESSARY" "$LABEL_IMAGE" "$out/day"
cp "$out/day/log.txt" "$program_log"
check "the kernel met no trouble of its own" kernel_is_well
finish

# Cables pulled and put back at random while the picture is live: those of one microscope, then that
# of a hub with two, which go and come back together. The open one is live again after every turn.
#
# From the environment: SOAK_REPLUGS and SOAK_HUBS, how often, and SOAK_SEED, which repeats a run.
. "$(dirname "$0")/desk.sh"

replugs=${SOAK_REPLUGS:-200}
hubs=${SOAK_HUBS:-50}
long_wait=600
seed=${SOAK_SEED:-$((RANDOM))}
echo "# SOAK_SEED=$seed SOAK_REPLUGS=$replugs SOAK_HUBS=$hubs"
RANDOM=$seed

# rest MOST: nothing in half of the cases, or else up to so many milliseconds.
rest() {
  local time=$((RANDOM % 2 * (RANDOM % $1)))
  sleep "$(printf '%d.%03d' $((time / 1000)) $((time % 1000)))"
}

# Each microscope's own words count from its mark on.
declare -A marks
mark_all() {
  local name
  for name in first second; do marks[$name]=$(lines "$out/$name.log"); done
}
has_said() { says "$out/$1.log" "$2" "${marks[$1]}"; }

# plug NAME: the kernel refuses a port until it has taken away what was there.
is_plugged() { has_said "$1" ": plugged$" || { tell "$1" plug && sleep 0.3 && has_said "$1" ": plugged$"; }; }
plug() { wait_for $answer is_plugged "$1"; }
is_unplugged() { has_said "$1" "unplugged after"; }
unplug() { tell "$1" unplug && wait_for $answer is_unplugged "$1"; }

both_are_cameras() { [ "$(cat /sys/class/video4linux/*/index | grep -c 0)" -eq 2 ]; }

# back NAME: whether that microscope, the open one, is asked for pictures again, and they are shown. On
# a machine that does other work too, an emulated one takes minutes for that.
streams_again() { has_said "$1" "streaming MJPEG"; }
back() { wait_for $long_wait streams_again "$1" && is_live $long_wait; }
open_files() { find "/proc/$program/fd" -type l | wc -l; }

# A slow machine's sheet may get its keys before it is ready for them: then it opens the first one again.
open_second() {
  local attempt
  for attempt in 1 2 3; do
    open_sheet || return 1
    key alt+m
    key End
    key Return
    wait_for $answer streams_again second && return 0
  done
  return 1
}

show_what_went_wrong() {
  photo failure
  tail -n 12 "$program_log" 2>/dev/null | sed 's/^/#   tessary: /'
  tail -n 4 "$out/first.log" "$out/second.log" | sed 's/^/#   /'
  kernel_log | tail -n 4 | sed 's/^/#   kernel: /'
}

start_microscope first --port 0 --sizes 640x480
need "a microscope is plugged in" wait_for $answer video_node_is_there
program_mark=0
start_program
need "the window shows" wait_for $first_picture has_window
check "the microscope is seen" wait_for $answer camera_is_seen 41312
choose_microscope
need "it is live" is_live $first_picture

for ((turn = 1; turn <= replugs; ++turn)); do
  mark_all 2>/dev/null
  rest 3000
  unplug first
  rest 4000
  plug first
  need "replug $turn of $replugs: back" back first
done

start_microscope second --port 1 --product a19b --name Second --serial S2 --sizes 640x480
check "a second microscope is seen" wait_for $answer camera_is_seen 41371
files=$(open_files)
opened=first
for ((turn = 1; turn <= hubs; ++turn)); do
  if ((turn == hubs / 2 + 1)); then
    mark_all
    need "the sheet opens the second one" open_second
    opened=second
    need "the second one is opened" back $opened
  fi
  mark_all
  pair=(first second)
  ((RANDOM % 2)) && pair=(second first)
  rest 3000
  # On a busy machine the program looks only when both are back.
  busy=$((RANDOM % 3 == 0))
  if ((busy)); then kill -STOP "$program"; fi
  # Both at once, and then the words of both.
  for name in "${pair[@]}"; do tell "$name" unplug; done
  for name in "${pair[@]}"; do wait_for $answer is_unplugged "$name"; done
  rest 4000
  ((RANDOM % 2)) && pair=("${pair[1]}" "${pair[0]}")
  for name in "${pair[@]}"; do tell "$name" plug; done
  for name in "${pair[@]}"; do plug "$name"; done
  if ((busy)); then
    wait_for $answer both_are_cameras || true
    kill -CONT "$program"
  fi
  need "hub $turn of $hubs: the $opened one is back$( ((busy)) && echo ', after both at once')" back $opened
done
files_are_no_more() { [ "$(open_files)" -le "$files" ]; }
check "no file stayed open" wait_for $answer files_are_no_more

key ctrl+q
check "Ctrl+Q ends the program with status 0" ended_well $answer
check "the kernel met no trouble of its own" kernel_is_well
finish

# The whole program records while its microscope is unplugged and plugged in again: one movie, with a
# gap in time where there was no microscope, and every picture at its own time.
. "$(dirname "$0")/desk.sh"

away=15  # seconds without a microscope; far longer than any picture takes here
folder=$out/movies

start_recording() { key Return && wait_for $answer program_says "startRecord: "; }
movies() { find "$folder" -name '*.mp4' | wc -l; }
movie() { find "$folder" -name '*.mp4' -print -quit; }
size() { stat -c %s "$(movie)" 2>/dev/null || echo 0; }
has_grown() { [ "$(size)" -gt "$1" ]; }
record_goes_on() {
  local before
  before=$(size)
  wait_for $first_picture has_grown "$((before + 100000))"
}
is_closed() { ! readlink /proc/"$program"/fd/* | grep -qF "$1"; }
# A movie under way has fragments where a player looks for them; a finished one has its table alone.
is_finished() {
  [ "$(ffprobe -v trace "$1" 2>&1 | grep -c "type:'moof' parent:'root'")" -eq 0 ] &&
    [ "$(ffprobe -v trace "$1" 2>&1 | grep -c "type:'moov' parent:'root'")" -eq 1 ]
}
# Microseconds, one picture a line, in the order of the file.
times() {
  ffprobe -v error -select_streams v -show_entries packet=pts_time -of csv=p=0 "$1" |
    awk -F, '{ printf "%d\n", $1 * 1e6 + 0.5 }'
}
pictures_can_be_decoded() {
  local shown
  ffmpeg -v error -xerror -i "$1" -f null - || return 1
  shown=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$1")
  echo "#   pictures decoded: $shown"
  [ "${shown%,}" -eq "$(wc -l <"$out/times.txt")" ]
}
rises() { awk 'NR > 1 && $1 <= last { exit 1 } { last = $1 }' "$out/times.txt"; }
# The pictures before and after the longest gap, that gap and the next longest, in milliseconds.
gaps() {
  awk 'NR > 1 { gap = $1 - last
                if (gap > longest) { next_longest = longest; longest = gap; before = NR - 1 }
                else if (gap > next_longest) next_longest = gap }
       { last = $1 }
       END { print before, NR - before, int(longest / 1000), int(next_longest / 1000) }' "$out/times.txt"
}
now() { echo $((${EPOCHREALTIME/./} / 1000)); }

mkdir -p "$folder" "$HOME/.config/tessary"
printf '[General]\nimagePath=%s\nmaxRecord=0\n' "$folder" >"$HOME/.config/tessary/tessary.ini"

start_microscope microscope --sizes 640x480
need "the microscope is plugged in" wait_for $answer video_node_is_there
mark
start_program
need "the window shows" wait_for $first_picture has_window
check "the microscope is seen" wait_for $answer camera_is_seen 41312
choose_microscope
need "it is live" is_live $first_picture

# 1. A recording under way
mark
key ctrl+r
need "Ctrl+R opens the record sheet" wait_for $answer sheet_is_up
need "Return starts the recording" start_recording
need "the movie grows" record_goes_on
photo recording

# 2. The microscope goes and comes back
tell microscope unplug
unplugged=$(now)
need "unplugged: the picture goes and the program stays" picture_is_gone
check "unplugged: the record sheet stays" sheet_is_up
photo unplugged
sleep $away
tell microscope plug
plugged=$(now)
need "plugged in: live again by itself" is_live $first_picture
back=$(now)
need "plugged in: the movie grows on" record_goes_on
photo back

# 3. The end of it
key Return
check "Return ends the recording" wait_for $answer sheet_is_down
check "there is one movie" test "$(movies)" -eq 1
file=$(movie)
need "the movie is finished" wait_for $answer is_closed "$file"
check "it is an ordinary one" is_finished "$file"
times "$file" >"$out/times.txt"
read -r before after gap next_gap < <(gaps)
echo "#   $before pictures before the gap, $after after it; gap $gap ms, next longest $next_gap ms;" \
  "unplugged for $((plugged - unplugged)) ms, live again after $((back - unplugged)) ms"
check "every picture can be decoded" pictures_can_be_decoded "$file"
check "times rise from picture to picture" rises
check "pictures before and after" test "$before" -ge 5 -a "$after" -ge 5
check "the gap is at least the time without a microscope" test "$gap" -ge $((plugged - unplugged))
check "and no longer than until the picture was back" test "$gap" -le $((back - unplugged + 1000))
check "there is one such gap only" test "$next_gap" -lt $((gap / 2))

key ctrl+q
check "Ctrl+Q ends the program with status 0" ended_well $answer
check "the kernel met no trouble of its own" kernel_is_well
finish

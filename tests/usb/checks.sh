# Sourced by the scenarios: one line "ok - ..." or "not ok - ..." a step, and waiting for conditions.
# Everything here runs on the virtual machine, which may be twenty times slower than a real one.

out=/mnt/out
failures=0

# passes and fails STEP: note its result, and the seconds since the start.
passes() { echo "ok - $1 ($SECONDS s)"; }
fails() {
  echo "not ok - $1 ($SECONDS s)"
  failures=$((failures + 1))
  if declare -F show_what_went_wrong >/dev/null; then show_what_went_wrong; fi
}

# check STEP COMMAND...: the step passes if the command succeeds.
check() {
  local step=$1
  shift
  if "$@"; then passes "$step"; else fails "$step"; fi
}

# need STEP COMMAND...: the same, and the scenario ends if it fails.
need() {
  local before=$failures
  check "$@"
  [ "$failures" -eq "$before" ] || finish
}

finish() {
  if [ "$failures" -eq 0 ]; then echo "all passed"; else echo "$failures failed"; fi
  exit $((failures > 0))
}

# wait_for SECONDS COMMAND...: until the command succeeds; fails when the time is over.
wait_for() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ $SECONDS -lt $end ] || return 1
    sleep 0.3
  done
}

# says FILE PATTERN [FROM]: whether a line after line FROM of FILE matches the extended expression.
says() { tail -n "+$((${3:-0} + 1))" "$1" 2>/dev/null | grep -Eq -- "$2"; }
lines() { wc -l <"$1"; }

has_ended() { ! kill -0 "$1" 2>/dev/null; }

# The kernel's words, without those of the virtual host controller, which talks much.
kernel_log() { dmesg | grep -v vhci_hcd; }
kernel_is_well() { ! dmesg | grep -E 'BUG:|Oops|WARNING:|hung task'; }

# A microscope made of software. NAME.commands takes its commands, NAME.log is what it says.
# start_microscope NAME OPTION...: runs in the background; its process id is in $microscope_pid.
start_microscope() {
  local name=$1
  shift
  "$MICROSCOPE" --pictures "$PICTURES" --commands "/tmp/$name.commands" "$@" \
    2>"$out/$name.log" &
  microscope_pid=$!
}
tell() { echo "$2" >"/tmp/$1.commands"; }  # tell NAME COMMAND

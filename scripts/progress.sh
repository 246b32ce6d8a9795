# shellcheck shell=bash
# A progress line for the long steps of the scripts, sourced by them: on the standard error
# when it is a terminal, redrawn each second with \r and cleared when the step ends;
# nothing at all through a pipe, in CI, or when the script sets progress_quiet.
#   progress_start WHAT [LOG]   WHAT: how long so far; with LOG, a ninja build's log,
#                               how far the build is ([done/total]) and about how long is left
#   progress_stop               clears the line (also safe when none is shown)
progress_pid=""

progress_start() {
  progress_stop
  if [ ! -t 2 ] || [ -n "${progress_quiet:-}" ] || [ -n "${CI:-}" ]; then return 0; fi
  local what=$1 log=${2:-}
  (
    trap 'exit 0' TERM
    start=$SECONDS
    while :; do
      elapsed=$((SECONDS - start))
      line="$what: $elapsed s so far"
      step=""
      if [ -n "$log" ] && [ -f "$log" ]; then
        step=$(tail -c 65536 "$log" | grep -ao '^\[[0-9]*/[0-9]*\]' | tail -n 1 | tr -d '[]')
      fi
      if [ -n "$step" ] && [ "${step#*/}" -gt 0 ]; then
        done=${step%/*} total=${step#*/}
        line="$what: $((100 * done / total))% ($done of $total steps)"
        if [ "$done" -gt 0 ] && [ "$elapsed" -gt 0 ]; then
          line="$line, about $((elapsed * (total - done) / done)) s left"
        fi
      fi
      printf '\r%s\033[K' "${line:0:$((${COLUMNS:-80} - 1))}" >&2
      sleep 1
    done
  ) &
  progress_pid=$!
}

progress_stop() {
  if [ -z "$progress_pid" ]; then return 0; fi
  kill "$progress_pid" 2>/dev/null || true
  wait "$progress_pid" 2>/dev/null || true
  progress_pid=""
  printf '\r\033[K' >&2
}

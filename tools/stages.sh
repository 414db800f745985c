# For the scripts beside it, which source it: stages that show on one line what they do and how long
# it took. What a stage prints goes to a file of build/log, and is shown when it fails. On a
# terminal the line also shows the latest of it.
stage_logs=build/log
mkdir -p "$stage_logs"
rm -f "$stage_logs"/*

# stage NAME COMMAND [ARGUMENT...]
stage() {
  local name=$1 log start=$SECONDS status=0 job width
  shift
  log="$stage_logs/${name//[^a-zA-Z0-9_]/-}"
  printf '%-52s' "$name"
  "$@" >"$log" 2>&1 </dev/null &
  job=$!
  trap 'kill '"$job"' 2>/dev/null; exit 130' INT TERM
  [ ! -t 1 ] || width=$(tput cols 2>/dev/null || echo 80)
  while [ -t 1 ] && kill -0 "$job" 2>/dev/null; do
    printf '\r%-52s %5d s  %.*s\033[K' "$name" $((SECONDS - start)) $((width > 62 ? width - 62 : 0)) "$(tail -n 1 "$log" | tr -d '\r')"
    sleep 1
  done
  wait "$job" || status=$?
  trap - INT TERM
  [ ! -t 1 ] || printf '\r%-52s\033[K' "$name"
  printf ' %5d s' $((SECONDS - start))
  if [ $status = 0 ]; then
    # What the test runner counted.
    sed -nE 's/^[0-9]+% tests passed, [0-9]+ tests failed out of ([0-9]+)$/  \1 tests passed/p' "$log" | tr -d '\n'
    echo
  else
    printf '  FAILED, see %s:\n' "$log"
    # The first faults, then the end.
    grep -anE -A 8 'error:|\*\*\*|Failure$|ERROR: |WARNING: ThreadSanitizer' "$log" | head -n 60 || true
    tail -n 20 "$log"
  fi
  return $status
}

# A compiler cache is used where there is one. A base folder of its own would change the places that
# stops name.
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER-ccache}
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
  export CCACHE_BASEDIR=
  export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS-pch_defines,time_macros,include_file_mtime,include_file_ctime}
fi

# configure_and_build PRESET
configure_and_build() { cmake --preset "$1" && cmake --build --preset "$1"; }

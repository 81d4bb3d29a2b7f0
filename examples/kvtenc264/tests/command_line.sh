#!/usr/bin/env bash
# kvtenc264's command line: bad arguments and short inputs end with a message and a non-zero
# status; a good command writes the stream, the reconstruction and the summary line.
#   command_line.sh KVTENC264 WORKDIR
set -uo pipefail
enc=$(realpath "$1")
mkdir -p "$2" && cd "$2" || exit 1
head -c $((32 * 16 * 3 / 2 * 2)) /dev/zero >two.yuv          # two 32x16 frames
head -c $((32 * 16 * 3 / 2 + 100)) /dev/zero >short.yuv      # one frame and a piece

failed=0
# expect STATUS PATTERN ARGS...: the exit status is non-zero (or zero for "ok") and stderr matches.
expect() {
  local want=$1 pattern=$2
  shift 2
  "$enc" "$@" 2>err.txt >/dev/null
  local status=$?
  if { [ "$want" = ok ] && [ $status -ne 0 ]; } || { [ "$want" = fail ] && [ $status -eq 0 ]; } ||
    ! grep -q -- "$pattern" err.txt; then
    echo "FAIL: kvtenc264 $* -> status $status, stderr: $(cat err.txt)"
    failed=1
  fi
}
expect fail "no input file" -s 32x16 -o o.264
expect fail "no output file" -i two.yuv -s 32x16
expect fail "no picture size" -i two.yuv -o o.264
expect fail "bad size '32'" -i two.yuv -s 32 -o o.264
expect fail "bad size '0x16'" -i two.yuv -s 0x16 -o o.264
expect fail "must be even" -i two.yuv -s 31x16 -o o.264
expect fail "bad QP '52'" -i two.yuv -s 32x16 --qp 52 -o o.264
expect fail "bad QP '-1'" -i two.yuv -s 32x16 --qp -1 -o o.264
expect fail "bad keyint '0'" -i two.yuv -s 32x16 --keyint 0 -o o.264
expect fail "bad frame count 'x'" -i two.yuv -s 32x16 -n x -o o.264
expect fail "unknown argument '--fast'" -i two.yuv -s 32x16 --fast -o o.264
expect fail "--qp needs a value" -i two.yuv -s 32x16 -o o.264 --qp
expect fail "cannot open input" -i missing.yuv -s 32x16 -o o.264
expect fail "ends inside frame 1" -i short.yuv -s 32x16 -o o.264
expect fail "holds 2 frames, -n asks for 3" -i two.yuv -s 32x16 -n 3 -o o.264
expect fail "holds no frame" -i /dev/null -s 32x16 -o o.264
expect ok "2 frames 32x16 QP 26" -i two.yuv -s 32x16 -o o.264 --recon r.yuv
[ "$(stat -c %s r.yuv)" = "$(stat -c %s two.yuv)" ] || { echo "FAIL: reconstruction size"; failed=1; }
[ "$(head -c 5 o.264 | od -An -tx1 | tr -d ' ')" = 0000000167 ] || { echo "FAIL: stream does not start with an SPS"; failed=1; }
expect ok "1 frames" -i two.yuv -s 32x16 -n 1 --qp 0 --keyint 1 -o o.264
exit $failed

#!/usr/bin/env bash
# kvtdec against ffmpeg: encodes synthetic clips with ffmpeg's h263, h263p and mpeg4 encoders,
# decodes each with ffmpeg and with kvtdec and compares every frame; then feeds kvtdec truncated
# and bit-flipped streams, which must end in a clean error (exit 1 with a message) or decode.
#
#   conformance.sh KVTDEC YUVCMP WORKDIR
#
# Limits: intra-only streams at least 50 dB PSNR with no sample off by more than 2; streams with
# P-pictures at least 45 dB on average and 40 dB at the worst frame (the two inverse DCTs differ
# within IEEE 1180, so a small drift is expected). Where the encoder's own reconstruction is known
# (its per-frame luma PSNR), kvtdec must also land within 0.1 dB of it. Exit 77 (skip) without ffmpeg.
set -uo pipefail

kvtdec=$(realpath "$1")
yuvcmp=$(realpath "$2")
work=$3
if ! command -v ffmpeg >/dev/null; then
  echo "SKIPPED: ffmpeg is not installed (scripts/install-deps all installs it)"
  exit 77
fi
mkdir -p "$work"
cd "$work" || exit 1
export ASAN_OPTIONS=exitcode=86 UBSAN_OPTIONS=exitcode=86:halt_on_error=1:print_stacktrace=1

passed=0
failed=0
report() {  # report OK|FAIL text
  if [ "$1" = OK ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
  echo "$1  $2"
}

source_filter() {  # source_filter NAME WxH
  case $1 in
    testsrc2) echo "testsrc2=size=$2:rate=25" ;;                                # moving
    mandelbrot) echo "mandelbrot=size=$2:rate=25" ;;                            # detailed
    noise) echo "color=c=gray:size=$2:rate=25,noise=alls=80:allf=t+u,format=yuv420p" ;;  # noisy
  esac
}

# One conformance case: name, codec, size, source, frame count, kind (intra|inter), encoder options.
run_case() {
  local name=$1 codec=$2 size=$3 src=$4 frames=$5 kind=$6
  shift 6
  local w=${size%x*} h=${size#*x}
  local fmt=h263 stream="$name.263"
  [ "$codec" = mpeg4 ] && fmt=m4v stream="$name.m4v"
  ffmpeg -nostdin -loglevel error -y -f lavfi -i "$(source_filter "$src" "$size")" -frames:v "$frames" \
    -pix_fmt yuv420p -f rawvideo "$name.src.yuv" &&
    ffmpeg -nostdin -loglevel error -y -f rawvideo -pix_fmt yuv420p -s "$size" -r 25 -i "$name.src.yuv" \
      -c:v "$codec" -psnr -vstats_file "$name.vstats" "$@" -f "$fmt" "$stream" &&
    ffmpeg -nostdin -loglevel error -y -i "$stream" -f rawvideo -pix_fmt yuv420p "$name.ref.yuv" || {
    report FAIL "$name: ffmpeg could not make or decode the stream"
    return
  }
  local err
  if ! err=$("$kvtdec" -o "$name.yuv" "$stream" 2>&1); then
    report FAIL "$name: kvtdec failed: $err"
    return
  fi
  local limits=(--min-avg 45 --min-frame 40)
  [ "$kind" = intra ] && limits=(--min-avg 50 --min-frame 50 --max-diff 2)
  local cmp
  cmp=$("$yuvcmp" "$name.yuv" "$name.ref.yuv" "$w" "$h" "${limits[@]}")
  local status=$?
  # kvtdec against the encoder's reconstruction: its luma PSNR against the source, frame by frame.
  # The encoder lists its frames in coding order; ffprobe maps display order to it.
  local drift
  drift=$(paste <("$yuvcmp" "$name.yuv" "$name.src.yuv" "$w" "$h" --luma-psnr) \
    <(awk 'NR == FNR {psnr[NR - 1] = $0; next} {print psnr[$1]}' \
      <(grep -o 'PSNR= *[0-9.]*' "$name.vstats" | awk '{print $2}') \
      <(ffprobe -v error -show_entries frame=coded_picture_number -of csv=p=0 "$stream")) |
    awk '{d = $1 - $2; if (d < 0) d = -d; if (d > m) m = d} END {printf "%.2f", m}')
  if [ $status -eq 0 ] && awk "BEGIN {exit !($drift <= 0.1)}"; then
    report OK "$name ($codec $size $src $*): $cmp; encoder luma PSNR within $drift dB"
  else
    report FAIL "$name ($codec $size $src $*): $cmp; encoder luma PSNR off by up to $drift dB"
  fi
}

# Damaged copies of a stream: truncations and bit flips. kvtdec must exit 0 or 1, with a message
# naming the frame on 1, within the time limit and without a sanitizer report (exit 86).
damage_case() {
  local stream=$1 size ext=${1##*.} i
  size=$(stat -c %s "$stream")
  for i in 1 2 3 4 5 6 7 8 9 10 11 12; do
    local bad="damaged-$i.$ext" what
    if [ $i -le 4 ]; then
      what="truncated to $((size * i / 5)) bytes"
      head -c $((size * i / 5)) "$stream" >"$bad"
    else
      cp "$stream" "$bad"
      local flips="" k
      for k in 1 2 3 4 5 6; do
        local pos=$(((RANDOM * 32768 + RANDOM) % size)) bit=$((RANDOM % 8)) byte
        byte=$(od -An -tu1 -j "$pos" -N1 "$bad" | tr -d ' ')
        printf "$(printf '\\%03o' $((byte ^ (1 << bit))))" | dd of="$bad" bs=1 seek="$pos" conv=notrunc status=none
        flips="$flips $pos.$bit"
      done
      what="bits flipped at$flips"
    fi
    local out rc
    out=$(timeout 60 "$kvtdec" -o /dev/null "$bad" 2>&1)
    rc=$?
    if [ $rc -eq 0 ] || { [ $rc -eq 1 ] && echo "$out" | grep -q "frame [0-9]*"; }; then
      report OK "$stream $what: exit $rc ${out##*: }"
    else
      report FAIL "$stream $what: exit $rc: $out"
    fi
  done
}

matrix_ramp=$(seq -s, 8 71)
matrix_flat=$(printf '16,%.0s' $(seq 63))24

#        name        codec  size      source     frames kind   encoder options
run_case h263-i1     h263   128x96    testsrc2   8      intra  -q:v 2 -g 1
run_case h263-i2     h263   176x144   mandelbrot 8      intra  -q:v 31 -g 1
run_case h263-i3     h263   352x288   noise      6      intra  -q:v 9 -g 1
run_case h263-p1     h263   176x144   testsrc2   24     inter  -q:v 5 -g 12
run_case h263-p2     h263   352x288   mandelbrot 16     inter  -q:v 12 -g 60 -flags +mv4
run_case h263-obmc   h263   176x144   testsrc2   16     inter  -q:v 4 -obmc 1 -flags +mv4
run_case h263-gobs   h263   352x288   noise      10     inter  -q:v 20 -g 12 -ps 400
run_case h263-4cif   h263   704x576   testsrc2   6      inter  -q:v 6 -g 12
run_case h263-16cif  h263   1408x1152 mandelbrot 3      inter  -q:v 8 -ps 2000
run_case h263p-umv   h263p  200x120   testsrc2   16     inter  -q:v 5 -umv 1
run_case h263p-obmc  h263p  352x288   mandelbrot 12     inter  -q:v 3 -obmc 1 -flags +mv4 -umv 1 -g 60
run_case h263p-sl    h263p  320x240   noise      10     inter  -q:v 16 -g 12 -ps 300
run_case h263p-720p  h263p  1280x720  testsrc2   6      inter  -q:v 7 -umv 1 -ps 1200
run_case h263p-i     h263p  100x84    mandelbrot 6      intra  -q:v 2 -g 1
run_case h263p-aic1  h263p  176x144   testsrc2   6      intra  -q:v 10 -flags +aic -g 1
run_case h263p-aic2  h263p  352x288   mandelbrot 14     inter  -q:v 8 -flags +aic -g 12 -ps 400
run_case h263p-aic3  h263p  320x240   testsrc2   14     inter  -q:v 24 -flags +aic+mv4 -obmc 1 -umv 1
run_case mpeg4-i1    mpeg4  128x96    testsrc2   8      intra  -q:v 2 -g 1
run_case mpeg4-i2    mpeg4  174x138   mandelbrot 8      intra  -q:v 31 -g 1
run_case mpeg4-i3    mpeg4  352x288   noise      6      intra  -q:v 6 -g 1 -mpeg_quant 1
run_case mpeg4-p1    mpeg4  350x202   testsrc2   24     inter  -q:v 4 -flags +mv4 -g 12
run_case mpeg4-mat   mpeg4  352x288   mandelbrot 16     inter  -q:v 9 -g 60 -mpeg_quant 1 -intra_matrix "$matrix_ramp" -inter_matrix "$matrix_flat"
run_case mpeg4-vp    mpeg4  176x144   testsrc2   16     inter  -q:v 31 -ps 100 -flags +mv4
run_case mpeg4-vp2   mpeg4  322x242   noise      10     inter  -q:v 14 -g 12 -ps 500
run_case mpeg4-720p  mpeg4  1280x720  testsrc2   6      inter  -q:v 4 -flags +mv4
run_case mpeg4-b1    mpeg4  176x144   testsrc2   30     inter  -q:v 4 -bf 1
run_case mpeg4-b2    mpeg4  352x288   mandelbrot 16     inter  -q:v 8 -bf 2 -flags +mv4 -ps 500
run_case mpeg4-b3    mpeg4  320x240   noise      14     inter  -q:v 12 -bf 3 -g 60 -mpeg_quant 1

RANDOM=2024
damage_case h263-gobs.263
damage_case h263p-sl.263
damage_case mpeg4-vp.m4v
damage_case mpeg4-b2.m4v

echo "$passed passed, $failed failed"
[ $failed -eq 0 ]

#!/usr/bin/env bash
# Conformance of kvtenc264: encodes synthetic, detailed and noisy moving pictures at several sizes
# (some not multiples of 16), QPs across 0..51, intra-only and IPPP; decodes each stream with
# ffmpeg; every decoded picture must equal the encoder's reconstruction byte for byte.
#   conformance.sh KVTENC264 WORKDIR
set -euo pipefail
enc=$(realpath "$1")
work=$2
command -v ffmpeg >/dev/null || { echo "ffmpeg not found (scripts/install-deps installs it)"; exit 1; }
mkdir -p "$work"
cd "$work"

# content size frames qp keyint
cases=(
  "testsrc2   176x144 6 26 1"
  "testsrc2   176x144 8 26 250"
  "testsrc2   50x38   6 0 3"
  "testsrc2   16x16   4 51 250"
  "testsrc2   2x2     3 20 2"
  "mandelbrot 128x96  6 12 250"
  "mandelbrot 130x66  5 34 1"
  "mandelbrot 64x64   6 42 4"
  "noise      96x80   5 0 250"
  "noise      98x34   5 6 1"
  "noise      48x32   6 18 250"
  "noise      80x48   5 46 3"
  "random     64x48   3 0 1"
  "random     64x48   4 0 250"
  "random     32x32   4 30 250"
  "scroll     144x112 8 22 250"
  "scroll     72x40   6 38 250"
  "fastscroll 160x96  8 28 250"
  "testsrc2   64x48   40 30 17"
  "edge       64x32   4 0 1"
  "edge       64x32   4 0 250"
)
# Every third QP on noisy moving pictures, IPPP.
for qp in $(seq 1 3 51); do cases+=("noise 48x48 3 $qp 250"); done

source_of() {  # content size -> lavfi graph of moving pictures
  case $1 in
    testsrc2) echo "testsrc2=size=$2:rate=25" ;;
    mandelbrot) echo "mandelbrot=size=$2:rate=25" ;;
    noise) echo "testsrc2=size=$2:rate=25,noise=alls=60:allf=t+u" ;;
    random) echo "nullsrc=size=$2:rate=25,geq=lum='random(1)*255':cb='random(2)*255':cr='random(3)*255'" ;;
    scroll) echo "mandelbrot=size=320x240:rate=25,scroll=h=0.013:v=-0.021,crop=${2/x/:}:100:60" ;;
    # Saturated steps at QP 0: levels beyond CAVLC's range make macroblocks raise their QP.
    edge) echo "nullsrc=size=$2:rate=25,geq=lum='255*gt(X,20+3*N)':cb='255*gt(X,20+3*N)':cr='255*lte(X,20+3*N)'" ;;
    fastscroll) echo "mandelbrot=size=320x240:rate=25,scroll=h=0.06:v=0.04,crop=${2/x/:}:100:60" ;;
  esac
}

# Names the frame, plane, macroblock and sample of the first difference between two I420 files.
describe_difference() {
  local a=$1 b=$2 w=$3 h=$4
  local first offset frame rest plane pw x y va vb
  first=$(cmp -l "$a" "$b" 2>/dev/null | head -n 1 || true)
  read -r offset va vb <<<"$first"
  offset=$((offset - 1))
  local luma=$((w * h)) chroma=$((w / 2 * h / 2))
  frame=$((offset / (luma + 2 * chroma)))
  rest=$((offset % (luma + 2 * chroma)))
  if ((rest < luma)); then plane=Y pw=$w mbsize=16
  elif ((rest < luma + chroma)); then plane=U pw=$((w / 2)) rest=$((rest - luma)) mbsize=8
  else plane=V pw=$((w / 2)) rest=$((rest - luma - chroma)) mbsize=8; fi
  x=$((rest % pw)) y=$((rest / pw))
  echo "frame $frame, macroblock ($((x / mbsize)), $((y / mbsize))), $plane sample ($x, $y):" \
    "reconstruction $((8#$va)), ffmpeg $((8#$vb))"
}

failed=0
for c in "${cases[@]}"; do
  read -r content size frames qp keyint <<<"$c"
  w=${size%x*} h=${size#*x}
  name="$content-$size-q$qp-k$keyint"
  ffmpeg -v error -y -f lavfi -i "$(source_of "$content" "$size")" -frames:v "$frames" -pix_fmt yuv420p \
    -f rawvideo "$name.yuv"
  if ! "$enc" -i "$name.yuv" -s "$size" --qp "$qp" --keyint "$keyint" -o "$name.264" --recon "$name.rec.yuv" \
    2>"$name.log"; then
    echo "FAIL $name: encoder failed: $(cat "$name.log")"; failed=1; continue
  fi
  if ! ffmpeg -v error -threads 1 -i "$name.264" -f rawvideo -pix_fmt yuv420p -y "$name.dec.yuv" 2>"$name.ffmpeg"; then
    echo "FAIL $name: ffmpeg cannot decode the stream: $(head -n 3 "$name.ffmpeg")"; failed=1; continue
  fi
  if [ -s "$name.ffmpeg" ]; then
    echo "FAIL $name: ffmpeg reports: $(head -n 3 "$name.ffmpeg")"; failed=1; continue
  fi
  rec_size=$(stat -c %s "$name.rec.yuv") dec_size=$(stat -c %s "$name.dec.yuv")
  frame_size=$((w * h * 3 / 2))
  if ((rec_size != dec_size)); then
    echo "FAIL $name: ffmpeg decoded $((dec_size / frame_size)) frames, the encoder made $((rec_size / frame_size))"
    failed=1
  elif ! cmp -s "$name.rec.yuv" "$name.dec.yuv"; then
    echo "FAIL $name: $(describe_difference "$name.rec.yuv" "$name.dec.yuv" "$w" "$h")"
    failed=1
  else
    echo "ok   $name: $(sed 's/^kvtenc264: //' "$name.log")"
    rm -f "$name.yuv" "$name.264" "$name.rec.yuv" "$name.dec.yuv"
  fi
done
exit $failed

#!/usr/bin/env bash
# A tone curve on a 6000x4000 colour picture with libvips (maplut) and
# ImageMagick (-clut), each on its own uncompressed format so that the
# file's cost is small, with a plain copy of the same files as the baseline
# to subtract. lumivue's own figure comes from lumivue_bench
# (BM_CurveRgb, BM_CurveHsv), in memory.
set -euo pipefail
for tool in vips convert; do
  command -v "$tool" >/dev/null || {
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get install -y -qq libvips-tools imagemagick >/dev/null
  }
done
export MAGICK_WIDTH_LIMIT=100KP MAGICK_HEIGHT_LIMIT=100KP MAGICK_AREA_LIMIT=2GP
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
convert -size 6000x4000 gradient:blue-orange "$work/in.ppm"
vips copy "$work/in.ppm" "$work/in.v"
convert "$work/in.ppm" "$work/in.mpc"
# The same curve as the benchmark: 255 - (255 - i)^2 / 255, as a 256x1 table.
python3 - "$work" <<'PY'
import sys
w = sys.argv[1]
vals = [255 - (255 - i) * (255 - i) // 255 for i in range(256)]
with open(w + "/lut.pgm", "wb") as f:
    f.write(b"P5 256 1 255\n" + bytes(vals))
PY
vips copy "$work/lut.pgm" "$work/lut.v"
convert "$work/lut.pgm" "$work/lut.png"

best() {
  local best=999
  for _ in 1 2 3 4 5; do
    local t0 t1
    t0=$(date +%s.%N); "$@" >/dev/null 2>&1; t1=$(date +%s.%N)
    best=$(echo "$t1 - $t0" | bc -l | awk -v b="$best" '{ print ($1 < b) ? $1 : b }')
  done
  printf '%.3f' "$best"
}
vc=$(best vips copy "$work/in.v" "$work/c.v")
vm=$(best vips maplut "$work/in.v" "$work/m.v" "$work/lut.v")
ic=$(best convert "$work/in.mpc" "$work/c.mpc")
im=$(best convert "$work/in.mpc" "$work/lut.png" -clut "$work/m.mpc")
printf '%-34s %8s %8s %8s\n' "6000x4000, best of 5 (s)" copy curve "curve-copy"
printf '%-34s %8s %8s %8.3f\n' "vips maplut (.v)" "$vc" "$vm" "$(echo "$vm - $vc" | bc -l)"
printf '%-34s %8s %8s %8.3f\n' "ImageMagick -clut (.mpc)" "$ic" "$im" "$(echo "$im - $ic" | bc -l)"

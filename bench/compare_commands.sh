#!/usr/bin/env bash
# Whole commands, with file input and output, on a 24-megapixel photograph:
# lumivue-cli beside libvips, ImageMagick and GraphicsMagick, each peer
# called by its full installed path (a wrapper earlier on the PATH can cost
# a peer a third). Runs alternate (ours, a peer, ours, ...) so that drift in
# the machine's speed falls on both; each row gives the paired median of the
# wall-time ratio ours/peer, the medians of both, and their peak memory, as
# /usr/bin/time -v reports them.
#
#   bench/compare_commands.sh [build-dir] [runs] [all|codecs|geometry|filters]
#
# "codecs" times the conversions, Negative and the curve; "geometry" Resize
# (to a half and a third), a quarter turn, Crop and Add Border, TIFF to TIFF
# so that the operation is not hidden behind a JPEG codec; "filters" the
# Gaussian at radius 2 and 10 (sigma sqrt(2 r (r + 1) / 3) for the peers:
# two box passes of 2 r + 1), Unsharp Mask and Median 3x3, TIFF to TIFF.
#
# Installs the peers (libvips-tools, imagemagick, graphicsmagick) when
# missing. The figures go into docs/performance.md.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-7}
set_name=${3:-all}
cli=$(readlink -f "$build/lumivue-cli")
[ -x "$cli" ] || { echo "build lumivue-cli first" >&2; exit 1; }
need=()
[ -x /usr/bin/vips ] || need+=(libvips-tools)
[ -x /usr/bin/convert-im6.q16 ] || need+=(imagemagick)
[ -x /usr/bin/gm ] || need+=(graphicsmagick)
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get install -y -qq --no-install-recommends "${need[@]}" >/dev/null
fi
vips=/usr/bin/vips
im=$(readlink -f /usr/bin/convert)
gm=/usr/bin/gm
export MAGICK_WIDTH_LIMIT=100KP MAGICK_HEIGHT_LIMIT=100KP MAGICK_AREA_LIMIT=2GP

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
photo=../shared/testdata/photos/Kleiber_by_Lukas_Baubkus.jpg
if [ -f "$photo" ]; then
  "$vips" thumbnail "$photo" "$work/big.jpg" 6000 --height 4000 --size force
  "$vips" copy "$work/big.jpg" "$work/in.jpg[Q=92]"
else
  "$im" -size 6000x4000 plasma:fractal -quality 92 "$work/in.jpg"
fi
"$vips" copy "$work/in.jpg" "$work/in.tif"
"$vips" copy "$work/in.jpg" "$work/in.png[compression=6]"
# A lifting RGB curve, 255 - (255 - i)^2 / 255: a .crv file for us, a
# 256 x 1 table for the others.
cat >"$work/lift.crv" <<'EOF'
Curve 1.0
npts 3
style spline
point 0 0 0
point 1 128 192
point 2 255 255
end
EOF
python3 - "$work" <<'PY'
import sys
w = sys.argv[1]
vals = [255 - (255 - i) * (255 - i) // 255 for i in range(256)]
with open(w + "/lut.pgm", "wb") as f:
    f.write(b"P5 256 1 255\n" + bytes(vals))
PY
"$vips" copy "$work/lut.pgm" "$work/lut.v"
"$im" "$work/lut.pgm" "$work/lut.png"

# One run: wall seconds and peak kilobytes.
measure() {
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >/dev/null 2>&1 || true
  cat "$work/time"
}

# compare NAME "OURS" "PEER" ...: alternating runs, paired ratios.
compare() {
  local name=$1 ours=$2; shift 2
  for peer in "$@"; do
    local ratios=() a=() b=() am=0 bm=0
    measure $ours >/dev/null; measure $peer >/dev/null  # warm the caches
    for _ in $(seq "$runs"); do
      read -r ta ma <<<"$(measure $ours)"
      read -r tb mb <<<"$(measure $peer)"
      a+=("$ta"); b+=("$tb"); ratios+=("$(echo "$ta / $tb" | bc -l)")
      am=$ma; bm=$mb
    done
    local median_r median_a median_b
    median_r=$(printf '%s\n' "${ratios[@]}" | sort -g | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}')
    median_a=$(printf '%s\n' "${a[@]}" | sort -g | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}')
    median_b=$(printf '%s\n' "${b[@]}" | sort -g | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}')
    printf '| %s | %s | %.2f | %.2f s, %d MiB | %.2f s, %d MiB |\n' "$name" \
      "$(basename "${peer%% *}")" "$median_r" "$median_a" $((am / 1024)) "$median_b" $((bm / 1024))
  done
}

w=$work
echo "| command | peer | ours/peer (paired median) | ours | peer |"
echo "|---|---|---|---|---|"
if [ "$set_name" = all ] || [ "$set_name" = geometry ]; then
compare "Resize to a half" "$cli apply resize --width 3000 $w/in.tif $w/g1.tif" \
  "$vips resize $w/in.tif $w/h1.tif 0.5" "$im $w/in.tif -resize 50% -compress none $w/i1.tif"
compare "Resize to a third" "$cli apply resize --width 2000 $w/in.tif $w/g2.tif" \
  "$vips resize $w/in.tif $w/h2.tif 0.333333334" \
  "$im $w/in.tif -resize 2000x1333 -compress none $w/i2.tif"
compare "Rotate 90 degrees" "$cli apply mirror-rotate --orientation cw $w/in.tif $w/g3.tif" \
  "$vips rot $w/in.tif $w/h3.tif d90" "$im $w/in.tif -rotate 90 -compress none $w/i3.tif"
compare "Crop 4000 x 2000" "$cli apply crop --box 1000,1000,4999,2999 $w/in.tif $w/g4.tif" \
  "$vips crop $w/in.tif $w/h4.tif 1000 1000 4000 2000" \
  "$im $w/in.tif -crop 4000x2000+1000+1000 +repage -compress none $w/i4.tif"
compare "Add Border 100" \
  "$cli apply add-border --left 100 --right 100 --top 100 --bottom 100 --color 0,0,0 $w/in.tif $w/g5.tif" \
  "$vips embed $w/in.tif $w/h5.tif 100 100 6200 4200 --extend black" \
  "$im $w/in.tif -bordercolor black -border 100 -compress none $w/i5.tif"
fi
if [ "$set_name" = all ] || [ "$set_name" = filters ]; then
compare "Gaussian, radius 2" "$cli apply blur --method gaussian --radius 2 $w/in.tif $w/f1.tif" \
  "$vips gaussblur $w/in.tif $w/u1.tif 2" "$im $w/in.tif -blur 0x2 -compress none $w/x1.tif"
compare "Gaussian, radius 10" "$cli apply blur --method gaussian --radius 10 $w/in.tif $w/f2.tif" \
  "$vips gaussblur $w/in.tif $w/u2.tif 8.56" "$im $w/in.tif -blur 0x8.56 -compress none $w/x2.tif"
compare "Unsharp Mask, radius 2" \
  "$cli apply sharpen --method unsharp --radius 2 $w/in.tif $w/f3.tif" \
  "$vips sharpen $w/in.tif $w/u3.tif --sigma 2" "$im $w/in.tif -unsharp 0x2 -compress none $w/x3.tif"
compare "Median 3x3" "$cli apply blur --method median3 $w/in.tif $w/f4.tif" \
  "$vips rank $w/in.tif $w/u4.tif 3 3 4" "$im $w/in.tif -median 3 -compress none $w/x4.tif"
fi
[ "$set_name" = all ] || [ "$set_name" = codecs ] || exit 0
compare "JPEG to TIFF" "$cli convert $w/in.jpg $w/a.tif" \
  "$vips copy $w/in.jpg $w/b.tif" "$im $w/in.jpg -compress none $w/c.tif" \
  "$gm convert $w/in.jpg -compress none $w/d.tif"
compare "TIFF to JPEG" "$cli convert --quality 90 $w/in.tif $w/a.jpg" \
  "$vips copy $w/in.tif $w/b.jpg[Q=90]" "$im $w/in.tif -quality 90 $w/c.jpg" \
  "$gm convert $w/in.tif -quality 90 $w/d.jpg"
compare "TIFF to TIFF" "$cli convert $w/in.tif $w/a2.tif" \
  "$vips copy $w/in.tif $w/b2.tif" "$im $w/in.tif -compress none $w/c2.tif" \
  "$gm convert $w/in.tif -compress none $w/d2.tif"
compare "JPEG to JPEG" "$cli convert --quality 90 $w/in.jpg $w/a2.jpg" \
  "$vips copy $w/in.jpg $w/b2.jpg[Q=90]" "$im $w/in.jpg -quality 90 $w/c2.jpg" \
  "$gm convert $w/in.jpg -quality 90 $w/d2.jpg"
compare "PNG to PNG" "$cli convert $w/in.png $w/a.png" \
  "$vips copy $w/in.png $w/b.png[compression=6]" "$im $w/in.png $w/c.png" \
  "$gm convert $w/in.png $w/d.png"
compare "Negative, TIFF" "$cli apply negative $w/in.tif $w/n.tif" \
  "$vips invert $w/in.tif $w/m.tif" "$im $w/in.tif -negate -compress none $w/o.tif" \
  "$gm convert $w/in.tif -negate -compress none $w/p.tif"
compare "RGB curve, TIFF" \
  "$cli apply brightness-curve --curve $w/lift.crv --color-space rgb $w/in.tif $w/r.tif" \
  "$vips maplut $w/in.tif $w/s.tif $w/lut.v" "$im $w/in.tif $w/lut.png -clut -compress none $w/t.tif"

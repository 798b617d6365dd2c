#!/usr/bin/env bash
# Opening and saving a 24-megapixel photograph as JPEG and as TIFF, with
# lumivue-cli and, side by side in the same run, with libvips and
# ImageMagick. Prints one table; the figures go into docs/performance.md.
#
#   bench/compare_files.sh [build-dir]
#
# Installs the comparison tools (libvips-tools, imagemagick) when missing.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cli="$build/lumivue-cli"
[ -x "$cli" ] || { echo "build lumivue-cli first ($cli)" >&2; exit 1; }
for tool in vips convert; do
  command -v "$tool" >/dev/null || {
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get install -y -qq libvips-tools imagemagick >/dev/null
  }
done
# ImageMagick's default policy refuses pictures this large.
export MAGICK_WIDTH_LIMIT=100KP MAGICK_HEIGHT_LIMIT=100KP MAGICK_AREA_LIMIT=2GP

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
photo=../shared/testdata/photos/Kleiber_by_Lukas_Baubkus.jpg
if [ -f "$photo" ]; then
  convert "$photo" -resize '6000x4000!' -quality 92 "$work/in.jpg"
else
  # No photograph at hand: a smooth synthetic picture of the same size.
  convert -size 6000x4000 plasma:fractal -quality 92 "$work/in.jpg"
fi
convert "$work/in.jpg" -compress none "$work/in.tif"

# The best of five runs, in seconds.
best() {
  local best=999
  for _ in 1 2 3 4 5; do
    local t0 t1
    t0=$(date +%s.%N); "$@" >/dev/null 2>&1; t1=$(date +%s.%N)
    best=$(echo "$t1 - $t0" | bc -l | awk -v b="$best" '{ print ($1 < b) ? $1 : b }')
  done
  printf '%.3f' "$best"
}

printf '%-28s %10s %10s %12s\n' "6000x4000, best of 5 (s)" lumivue-cli vips ImageMagick
printf '%-28s %10s %10s %12s\n' "JPEG -> JPEG (quality 90)" \
  "$(best "$cli" convert --quality 90 "$work/in.jpg" "$work/a.jpg")" \
  "$(best vips copy "$work/in.jpg" "$work/b.jpg[Q=90]")" \
  "$(best convert "$work/in.jpg" -quality 90 "$work/c.jpg")"
printf '%-28s %10s %10s %12s\n' "TIFF -> TIFF (uncompressed)" \
  "$(best "$cli" convert "$work/in.tif" "$work/a.tif")" \
  "$(best vips copy "$work/in.tif" "$work/b.tif")" \
  "$(best convert "$work/in.tif" -compress none "$work/c.tif")"
printf '%-28s %10s %10s %12s\n' "JPEG -> TIFF" \
  "$(best "$cli" convert "$work/in.jpg" "$work/d.tif")" \
  "$(best vips copy "$work/in.jpg" "$work/e.tif")" \
  "$(best convert "$work/in.jpg" -compress none "$work/f.tif")"

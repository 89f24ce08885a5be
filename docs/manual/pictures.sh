#!/bin/sh
# Makes the manual's pictures anew: the guided tour through a fresh sample dealership, reduced to few colours. Needs a
# build and ImageMagick. Only pictures that a page shows are kept; none is ever made or touched up by hand.
set -eu
cd "$(dirname "$0")"
command -v convert >/dev/null || {
    echo "pictures.sh: ImageMagick reduces the pictures' colours and is not installed: apt-get install imagemagick" >&2
    exit 1
}
bin=$(cd ../.. && pwd)/build/bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$bin/make-dealership" "$work/dealership" >/dev/null
ln -s "$bin/Layouts" "$work/dealership/program/Layouts"
QT_QPA_PLATFORM=offscreen "$bin/velk-tour" "$work/dealership/program" "$work" 940x640 >"$work/said" 2>&1 ||
    { cat "$work/said" >&2; exit 1; }
rm -f images/*.png
for name in $(grep -oh 'src="images/[a-z0-9-]*\.png"' ./*.html | sed 's|.*/||; s|\.png"||' | sort -u); do
    convert "$work"/*-"$name".png +dither -colors 64 -strip "PNG8:images/$name.png"
done
ls -la images

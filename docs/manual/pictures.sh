#!/bin/sh
# Makes the pictures of the manual and of the README anew: the guided tour through a fresh sample dealership, reduced to
# few colours. Needs a build, ImageMagick, and LibreOffice and pdftoppm for the exported sheet. Only pictures that a page
# shows are kept; none is ever made or touched up by hand.
set -eu
cd "$(dirname "$0")"
for tool in convert:imagemagick soffice:libreoffice-calc-nogui pdftoppm:poppler-utils; do
    command -v "${tool%:*}" >/dev/null || {
        echo "pictures.sh: ${tool%:*} is not installed: apt-get install ${tool#*:}" >&2
        exit 1
    }
done
bin=$(cd ../.. && pwd)/build/bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$bin/make-dealership" "$work/dealership" >/dev/null
ln -s "$bin/Layouts" "$work/dealership/program/Layouts"
# So wide that the order form shows every column.
QT_QPA_PLATFORM=offscreen "$bin/velk-tour" "$work/dealership/program" "$work" 1280x720 >"$work/said" 2>&1 ||
    { cat "$work/said" >&2; exit 1; }

# The tour's picture of that name, into a file; further arguments say what part of it.
keep() {
    name=$1
    file=$2
    shift 2
    convert "$work"/*-"$name".png "$@" +dither -colors 64 -strip "PNG8:$file"
}
rm -f images/*.png ../images/*.png
for name in $(grep -oh 'src="images/[a-z0-9-]*\.png"' ./*.html | sed 's|.*/||; s|\.png"||' | sort -u); do
    keep "$name" "images/$name.png"
done
keep corrected ../images/order-form.png
keep report ../images/report.png
keep paper ../images/paper-preview.png
keep exported-sheet ../images/exported-sheet.png -crop 662x440+0+0 +repage
ls -la images ../images

#!/bin/sh
# Renders the drawings of svg/ into icons/ and program/. Only needed when a drawing changes: the results are kept.
# Needs rsvg-convert (librsvg2-bin), optipng, icotool (icoutils), convert (imagemagick) and the font DejaVu Sans.
set -eu

cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# png NAME SIZE FILE: small sizes have drawings of their own, laid out on the 16 px grid
png() {
    source=svg/$1.svg
    if [ "$2" -le 24 ]; then
        source=svg/$1-small.svg
    fi
    rsvg-convert -w "$2" -h "$2" "$source" -o "$3"
}

# icon NAME FILE LEAST: 16 to 256 px; entries from LEAST px on are stored as PNG, which is small, and which old icon
# loaders do not read
icon() {
    drawing=$1
    target=$2
    least=$3
    set --
    for size in 16 24 32 48 64 128 256; do
        file=$work/$drawing-$size.png
        png "$drawing" "$size" "$file"
        optipng -quiet -o7 -nc -strip all "$file"
        if [ "$size" -lt "$least" ]; then
            set -- "$@" "$file"
        else
            set -- "$@" "--raw=$file"
        fi
    done
    icotool -c -o "$target" "$@"
}

# picture NAME FORMAT [WIDTH]: a receiver picture, 320 px wide unless told otherwise
picture() {
    rsvg-convert -w "${3:-320}" "svg/$1.svg" -o "$work/$1.png"
    target=program/$1.$2
    case $2 in
    bmp) convert "$work/$1.png" -alpha off -define bmp:format=bmp3 -type TrueColor "BMP3:$target" ;;
    jpg) convert "$work/$1.png" -alpha off -strip -sampling-factor 1x1 -quality 92 "$target" ;;
    gif) convert "$work/$1.png" -alpha off -strip -dither FloydSteinberg -colors 256 "$target" ;;
    ico) icotool -c -o "$target" "$work/$1.png" ;;
    esac
}

# side WIDTH FILE: the picture at the side of the installer for Windows
side() {
    rsvg-convert -w "$1" svg/setup.svg -o "$work/setup.png"
    convert "$work/setup.png" -alpha off +dither -colors 64 -type Palette -compress none "BMP3:$2"
}

mkdir -p icons program

for name in 103 104; do
    icon "$name" "icons/$name.ico" 48
    cp "$work/$name"-*.png icons/
done
for size in 22 512; do # besides, for the menus of Linux desktops
    png 103 "$size" "icons/103-$size.png"
    optipng -quiet -o7 -nc -strip all "icons/103-$size.png"
done
icon orvantastick program/orvantastick.ico 256

for name in file nofile; do
    rsvg-convert "svg/$name.svg" -o "$work/$name.png"
    convert "$work/$name.png" -alpha off -type TrueColor "BMP3:program/$name.bmp"
done

picture sr100 bmp
picture sr200ci gif
picture sr300pvr jpg
picture sr400twin gif
picture sr500hd jpg
picture sr600hdci ico 224 # an icon stays below 256 px: icotool then records both sides of a picture that is not square
picture sr700hdtwin jpg
picture sr800hdpvr bmp
picture sr900uhd jpg

side 150 ../packaging/windows/setup.bmp
side 300 ../packaging/windows/setup-large.bmp

#!/usr/bin/env bash
# Makes the pictures of README.md and of tool.md, in docs/pictures. Usage: pictures.sh BUILD_FOLDER.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."
examples=examples/pictures pictures=docs/pictures
cascade=/usr/share/opencv4/haarcascades/haarcascade_frontalface_alt.xml # of Debian's package opencv-data
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch"/{still,moving,masks,trails,small}
convert_media() { ffmpeg -nostdin -v error -y "$@"; }

"$build/vek" filter sobel-neg-vert $examples/camera.png $pictures/derivative.jpg
"$build/vek" localcontrast $examples/camera.png $pictures/local-contrast.jpg --window 5
"$build/vek" edges $examples/camera.png $pictures/edges.png --low 100 --high 250
"$build/vek" detect "$cascade" $examples/astronaut.png -o $pictures/faces.jpg
"$build/vek" morph blackhat $examples/text.png $pictures/writing.png --element ellipse --size 9x9

"$build/vek" edges $examples/coins.png "$scratch/edges.png" --low 1500 --high 3000 --aperture 5
"$build/vek" morph close "$scratch/edges.png" "$scratch/closed.png" --element ellipse --size 5x5
"$build/vek" fillholes "$scratch/closed.png" $pictures/regions.png
"$build/vek" segment $examples/coins.png $pictures/objects.png --mask $pictures/regions.png

"$build/tools/make_scratches" $examples/astronaut.png $pictures/scratched.jpg "$scratch/scratches.png"
"$build/tools/make_scratches" $examples/astronaut.png "$scratch/scratched.png" "$scratch/scratches.png"
"$build/vek" inpaint "$scratch/scratched.png" "$scratch/scratches.png" $pictures/restored.jpg

"$build/tools/make_scene" $examples/camera.png $examples/chelsea.png "$scratch/still" 30 0
"$build/tools/make_scene" $examples/camera.png $examples/chelsea.png "$scratch/moving" 30 3
"$build/vek" foreground "$scratch"/still/*.png -o "$scratch/masks/%02d.png"
"$build/vek" track "$scratch"/moving/*.png -o "$scratch/trails/%02d.jpg"
cp "$scratch/masks/15.png" $pictures/foreground.png
cp "$scratch/trails/18.jpg" $pictures/trails.jpg
convert_media -i "$scratch/still/frame-15.png" -q:v 3 $pictures/frame.jpg

# A part of the photograph, from one of the small frames and from all of them.
detail=crop=120:120:190:70,scale=240:240:flags=neighbor
"$build/tools/make_small_frames" $examples/camera.png "$scratch/small" 16
"$build/vek" superres "$scratch"/small/*.png -o "$scratch/large.png"
convert_media -i "$scratch/small/frame-01.png" -vf scale=2*iw:-1:flags=bicubic "$scratch/enlarged.png"
convert_media -i "$scratch/enlarged.png" -vf $detail $pictures/enlarged.png
convert_media -i "$scratch/large.png" -vf $detail $pictures/super-resolution.png

convert_media -f lavfi -i color=white:s=480x360,drawgrid=w=40:h=40:t=3:c=black -frames:v 1 -pix_fmt gray \
    "$scratch/grid.png"
"$build/tools/make_bent" "$scratch/grid.png" $pictures/bent.png
"$build/vek" undistort $pictures/bent.png $pictures/straightened.png --focal 400,400 --radial -0.25,0.05

# The six of the README, all of 320 x 240 pixels. Two of them show before and after side by side.
convert_media -i $pictures/edges.png -vf crop=512:384:0:30,scale=320:240 $pictures/six-edges.png
convert_media -i $pictures/faces.jpg -vf crop=512:384:0:0,scale=320:240 -q:v 4 $pictures/six-faces.jpg
convert_media -i $pictures/objects.png -vf crop=384:288:0:8,scale=320:240 -q:v 4 $pictures/six-coins.jpg
convert_media -i "$scratch/trails/18.jpg" -q:v 5 $pictures/six-trails.jpg
convert_media -i "$scratch/scratched.png" -i $pictures/restored.jpg -filter_complex \
    '[0]crop=256:384:0:0[a];[1]crop=256:384:256:0[b];[a][b]hstack,scale=320:240' -q:v 4 $pictures/six-restored.jpg
convert_media -i "$scratch/enlarged.png" -i "$scratch/large.png" -filter_complex \
    '[0]crop=80:120:204:70[a];[1]crop=80:120:204:70[b];[a][b]hstack,scale=320:240:flags=neighbor' \
    $pictures/six-super-resolution.png

# What the C example of the README makes.
# shellcheck disable=SC2016
sed -n '/^```c$/,/^```$/{/^```/d;p}' README.md >"$scratch/cells.c"
cc "$scratch/cells.c" -Iinclude -L"$build" -lvekcv -lvekcore -Wl,-rpath,"$build" -o "$scratch/cells"
"$scratch/cells" >"$scratch/cells.pgm"
convert_media -i "$scratch/cells.pgm" -vf scale=320:240 $pictures/cells.png

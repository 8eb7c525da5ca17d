#!/usr/bin/env bash
# Shows the operations of the tool on photographs, as a page of pictures: build/demo/index.html.
# Usage: run.sh BUILD_FOLDER. What the page is made of is in page.sh.
set -euo pipefail
build=$(realpath "$1")
here=$(realpath "$(dirname "$0")")
source=$(realpath "$here/../..")
demo=$source/build/demo
rm -rf "$demo"
mkdir -p "$demo"/{filters,frames,motion,still,moving,masks,histogram,trails,small}
cd "$demo"
cp "$source"/examples/pictures/*.png .
cascades=/usr/share/opencv4/haarcascades  # of Debian's package opencv-data
# shellcheck source=tools/demo/page.sh
. "$here/page.sh"
convert_media() { ffmpeg -nostdin -v error -y "$@"; }

# Inputs that are made from the photographs.
"$build/tools/make_frames" camera.png frames 12
"$build/tools/make_scratches" astronaut.png scratched.png scratches.png
"$build/tools/make_scene" camera.png chelsea.png still 30 0
"$build/tools/make_scene" camera.png chelsea.png moving 30 3
"$build/tools/make_small_frames" camera.png small 16
convert_media -f lavfi -i 'color=white:s=480x360,drawgrid=w=40:h=40:t=3:c=black' -frames:v 1 -pix_fmt gray grid.png
"$build/tools/make_bent" grid.png grid-bent.png
"$build/tools/make_bent" coffee.png coffee-bent.png
convert_media -i chelsea.png -vf 'crop=iw-2:ih-1:2:1,pad=iw+2:ih+1' shifted.png
convert_media -i text.png -pix_fmt gray16be text16.png
convert_media -i text16.png -vf 'gblur=sigma=12' -pix_fmt gray16be blurred16.png
convert_media -f lavfi -i 'color=black:s=320x240,drawbox=0:0:160:240:white:fill' -frames:v 1 -pix_fmt gray mask.png
convert_media -framerate 6 -i frames/frame-%02d.png -c:v ffv1 -pix_fmt gray frames.mkv

entries() {
    section 'Absolute difference' 'What differs between two pictures, pixel by pixel.'
    show 'Two frames of a sequence, 8-bit grey' 'frames/frame-03.png frames/frame-09.png' difference.png \
        diff frames/frame-03.png frames/frame-09.png difference.png
    show 'A photograph and itself moved by two pixels, 8-bit colour' 'chelsea.png shifted.png' edges.png \
        diff chelsea.png shifted.png edges.png
    show 'Text and its blurred self: the uneven light is gone, 16-bit grey' 'text16.png blurred16.png' letters.png \
        diff text16.png blurred16.png letters.png

    section 'Running average' 'A background that learns: each new frame enters with a weight. A disc crosses the picture
in twelve shaking, noisy frames; the average forgets it and smooths the noise.'

    show 'Twelve frames' 'frames/frame-02.png frames/frame-07.png frames/frame-12.png' background.png \
        background 'frames/*.png' -o background.png --alpha 0.1
    show 'Learned in the left half alone, by a mask' 'frames/frame-12.png mask.png' masked.png \
        background 'frames/*.png' -o masked.png --alpha 0.1 --mask mask.png
    show 'The same twelve frames as a video' frames/frame-12.png video.png \
        background frames.mkv -o video.png --alpha 0.1

    section 'Motion' 'The difference of each frame from the average of those before it.'
    show 'Frames 3, 6, 9 and 12 of twelve' 'frames/frame-03.png frames/frame-06.png' \
        'motion/03.png motion/06.png motion/09.png motion/12.png' \
        motion 'frames/*.png' -o motion/%02d.png --alpha 0.1

    section 'Foreground' 'What does not belong to a background that is learned: a disc with the face of a cat crosses a
noisy scene in thirty frames.'
    show 'By Gaussian distributions: frames 8, 15 and 22, and the background learned' \
        'still/frame-08.png still/frame-15.png still/frame-22.png' \
        'masks/08.png masks/15.png masks/22.png learned.png' \
        foreground 'still/*.png' -o masks/%02d.png --background learned.png
    show 'By histograms, in colour' \
        'still/frame-08.png still/frame-15.png still/frame-22.png' \
        'histogram/08.png histogram/15.png histogram/22.png learned-histogram.png' \
        foreground 'still/*.png' -o histogram/%02d.png --background learned-histogram.png --model histogram

    section 'Tracks' 'Corners followed by optical flow: the camera moves to the right, and the disc against that.'
    show 'Frames 2, 12 and 22 of thirty, with the trails of corners' \
        'moving/frame-02.png moving/frame-12.png moving/frame-22.png' \
        'trails/02.png trails/12.png trails/22.png' \
        track 'moving/*.png' -o trails/%02d.png

    section 'Statistics' 'Mean, standard deviation, minimum and maximum of every channel, and where these occur first.'
    print 'Photographs in grey and in colour, and text with 16 bits' \
        stats camera.png coins.png astronaut.png coffee.png text16.png
    print 'The left half of a frame alone, by a mask' stats frames/frame-12.png --mask mask.png
    print 'For other programs' stats coins.png --json

    section 'Local contrast' 'The standard deviation of the window around each pixel, twice as bright: what is flat is
black, edges and texture are light.'
    show 'Coins, windows of 5 x 5' coins.png coins-5.png localcontrast coins.png coins-5.png --window 5
    show 'Coins, windows of 15 x 15' coins.png coins-15.png localcontrast coins.png coins-15.png --window 15
    show 'A photograph, windows of 5 x 5' camera.png camera-5.png localcontrast camera.png camera-5.png --window 5
    show 'A photograph, windows of 15 x 15' camera.png camera-15.png localcontrast camera.png camera-15.png --window 15

    section 'Filters' 'Derivatives are grey where they are 0, light where they are positive and dark where they are
negative; the largest magnitude in a picture is black or white. The mean and the Gaussian filter smooth.'
    strip 'A photograph under every filter, masks of 3 x 3' camera.png \
        sobel-horiz sobel-vert sobel-neg-vert sobel-horiz-second sobel-vert-second sobel-cross \
        scharr-horiz scharr-vert laplacian lowpass 'gauss --sigma 1.5' 'gauss --sigma 5'
    strip 'Coins, masks of 5 x 5' coins.png 'sobel-horiz --aperture 5' 'sobel-neg-vert --aperture 5' \
        'laplacian --aperture 5' 'lowpass --aperture 5'

    section 'Edges' 'By Canny: where the derivative is largest across an edge and above a threshold, and where it is
above a lower one beside that.'
    show 'A photograph' camera.png camera-edges.png edges camera.png camera-edges.png --low 100 --high 250
    show 'Coins, with derivatives over 5 x 5 pixels' coins.png coins-edges.png \
        edges coins.png coins-edges.png --low 1500 --high 3000 --aperture 5

    section 'Morphology' 'The largest, the smallest value under an element that lies on each pixel in turn, and what
they are combined to.'
    show 'Writing on uneven paper, and what is darker than all around it in 9 x 9 pixels: the uneven light is gone' \
        text.png writing.png morph blackhat text.png writing.png --element ellipse --size 9x9
    show 'The paper alone' text.png paper.png morph close text.png paper.png --element ellipse --size 15x15
    show 'Coins on a cloth that is lighter at the top, and what is lighter than the cloth' coins.png coins-tophat.png \
        morph tophat coins.png coins-tophat.png --element ellipse --size 75x75
    show 'Edges, up to 5 pixels wide' camera.png outlines.png \
        morph gradient camera.png outlines.png --element ellipse --size 5x5
    show 'A photograph without light spots of less than 11 pixels' chelsea.png chelsea-open.png \
        morph open chelsea.png chelsea-open.png --element ellipse --size 11x11

    section 'Holes and regions' 'Reconstruction: what light regions hold, and which of them a marker touches.'
    show 'Coins, and the dark places in them as light as the walls around' coins.png coins-filled.png \
        fillholes coins.png coins-filled.png
    show 'The edges of coins, and the same without gaps' coins-edges.png coins-closed.png \
        morph close coins-edges.png coins-closed.png --element ellipse --size 5x5
    show 'Their holes filled: the coins as regions' coins-closed.png coins-regions.png \
        fillholes coins-closed.png coins-regions.png
    show 'Places where a disc of 49 x 49 pixels fits in' coins-regions.png coins-places.png \
        morph erode coins-regions.png coins-places.png --element ellipse --size 49x49
    show 'The regions that have such a place' 'coins-places.png coins-regions.png' coins-large.png \
        reconstruct coins-places.png coins-regions.png coins-large.png

    section 'Distances' 'How far each white pixel is from the nearest black one: black at 0, over violet and orange to
light yellow at the largest distance.'
    show 'Coins as regions, without specks and thin parts' coins-regions.png coins-clean.png \
        morph open coins-regions.png coins-clean.png --element ellipse --size 25x25
    show 'How far it is out of them' coins-clean.png distance-view.png \
        distance coins-clean.png distance.png --view distance-view.png
    show 'The same in steps past the sides of pixels' coins-clean.png steps-view.png \
        distance coins-clean.png steps.png --norm l1 --view steps-view.png

    section 'Flood fill' 'The connected region around a pixel, by the values that its pixels may have.'
    show 'What is at most 40 darker or lighter than the pixel: the coat' camera.png camera-coat.png \
        fill camera.png camera-coat.png --seed 200,250 --range --delta 40
    show 'What changes by at most 2 from pixel to pixel: the sky' camera.png camera-sky.png \
        fill camera.png camera-sky.png --seed 30,30 --gradient --delta 2 --value 0
    show 'In colour' coffee.png coffee-fill.png \
        fill coffee.png coffee-fill.png --seed 300,200 --range --delta 60 --value 0,128,255

    section 'Labels and segments' 'Regions told apart: by gaps between them, or by a watershed where they touch.'
    show 'Coins as regions' coins-clean.png coins-labels.png label coins-clean.png coins-labels.png
    show 'The same grown until they touch' coins-clean.png touching.png \
        morph dilate coins-clean.png touching.png --element ellipse --size 15x15
    show 'What is connected is one region' touching.png touching-labels.png label touching.png touching-labels.png
    show 'A watershed finds all of them' 'touching.png coins.png' touching-segments.png \
        segment coins.png touching-segments.png --mask touching.png
    show 'Coins without the uneven light, found by a threshold' coins-tophat.png coins-segments.png \
        segment coins-tophat.png coins-segments.png
    print 'Places in numbers' label coins-places.png places-labels.png --json

    section 'Inpainting' 'Pixels restored from those around them, from the edge of a mask inwards.'
    show 'A photograph with scratches and writing, and where they are' 'scratched.png scratches.png' restored.png \
        inpaint scratched.png scratches.png restored.png
    show 'The same by method 1' 'scratched.png scratches.png' restored-1.png \
        inpaint scratched.png scratches.png restored-1.png --method 1
    show 'What is left of the difference from the photograph' 'astronaut.png restored.png' restored-difference.png \
        diff astronaut.png restored.png restored-difference.png

    section 'Lenses' 'Lines that a lens bends become straight.'
    show 'A grid' grid-bent.png grid-straight.png \
        undistort grid-bent.png grid-straight.png --focal 400,400 --radial -0.25,0.05
    show 'A photograph' coffee-bent.png coffee-straight.png \
        undistort coffee-bent.png coffee-straight.png --focal 400,400 --radial -0.25,0.05

    section 'Super-resolution' 'One picture of twice the width and height from small, noisy frames that are each moved
by another fraction of a pixel; the tool finds out how. The ratio of signal to noise is that against the photograph,
whose small copies the frames are. Below, a part of the first frame enlarged, of the result, and of the photograph.'
    show 'Sixteen frames of 256 x 256 pixels' 'small/frame-01.png small/frame-02.png small/frame-16.png' large.png \
        superres 'small/*.png' -o large.png --reference camera.png
    detail='crop=120:120:190:70,scale=480:480:flags=neighbor'
    convert_media -i small/frame-01.png -vf "scale=2*iw:-1:flags=bicubic,$detail" detail-enlarged.png
    convert_media -i large.png -vf "$detail" detail-large.png
    convert_media -i camera.png -vf "$detail" detail-camera.png
    figures 'A part of it' detail-enlarged.png detail-large.png detail-camera.png

    section 'Objects' 'What a trained cascade of Haar-like features finds: x, y, width and height, and a box in the
picture.'
    show 'A face' astronaut.png faces.png detect "$cascades/haarcascade_frontalface_alt.xml" astronaut.png -o faces.png
}

entries >entries.html
document 'vekcv on photographs' 'Every picture with an arrow was made by the command below it. The time is that of the
library functions alone, without reading and writing files, of one run on this machine.' \
    "$here/style.css" entries.html >index.html
rm entries.html
echo "The page is $demo/index.html"

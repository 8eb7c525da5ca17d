# What run.sh makes the page of: functions that write HTML to standard output. They read $build, the build folder with
# vek. An entry of the page is one call of `show`, `print`, `strip` or `figures`; the contents follow from the headings.
# shellcheck shell=bash
# shellcheck disable=SC2154  # build is set by run.sh

escape() { sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g' <<<"$1"; }

# heading LEVEL TEXT PLACE: the id is the place in small letters and digits, with hyphens for all else.
heading() {
    local id
    id=$(tr -cs 'a-z0-9\n' - <<<"${3,,}")
    printf '<h%s id="%s">%s</h%s>\n' "$1" "${id%-}" "$(escape "$2")" "$1"
}

# section TITLE TEXT: ends the section before, and begins one. `document` ends the last one.
section() {
    [ -z "${section:-}" ] || echo '</div>'
    section=$1
    heading 2 "$1" "$1"
    printf '<p>%s <a href="#contents">Contents</a></p>\n<div class="entries">\n' "$2"
}

# run ARGUMENT...: runs vek with the arguments; sets `text` to what it prints and `time` to the time that the library
# took. What it complains of is shown, and ends the script.
run() {
    echo "vek $*" >&2
    # Unquoted, for an argument may be a pattern of file names, which is then shown as it is.
    # shellcheck disable=SC2048,SC2086
    if ! text=$("$build/vek" $* --time 2>errors.txt); then
        cat errors.txt >&2
        exit 1
    fi
    time=$(sed -n 's/^ *\([0-9.]* ms\)  in all$/\1/p' errors.txt)
    rm errors.txt
}

# begin TITLE PICTURES: begins an entry with so many pictures, which takes the whole width where they are many.
begin() {
    if [ "$2" -gt 4 ]; then echo '<article class="wide">'; else echo '<article>'; fi
    heading 3 "$1" "$section $1"
}

# picture FILE CAPTION [CLASS]: one picture, which leads to the file; the caption is HTML.
picture() {
    printf '<figure class="%s"><a href="%s"><img src="%s" alt="%s"></a><figcaption>%s</figcaption></figure>\n' \
        "${3:-source}" "$1" "$1" "$1" "$2"
}

# command_line ARGUMENT...: the command of an entry, with the time that the library took.
command_line() { printf '<code>vek %s</code>\n<p class="time">%s in the library</p>\n' "$(escape "$*")" "$time"; }

# show TITLE INPUTS OUTPUTS ARGUMENT...: runs vek with the arguments, and shows the pictures, what it prints and the
# time that the library took. Inputs and outputs are lists of pictures, separated by spaces.
show() {
    local title=$1 inputs outputs file text time
    read -ra inputs <<<"$2"
    read -ra outputs <<<"$3"
    shift 3
    run "$@"
    begin "$title" $((${#inputs[@]} + ${#outputs[@]}))
    echo '<div class="pictures">'
    for file in "${inputs[@]}"; do picture "$file" "$file"; done
    for file in "${outputs[@]}"; do picture "$file" "$file" result; done
    echo '</div>'
    [ -z "$text" ] || printf '<pre>%s</pre>\n' "$(escape "$text")"
    command_line "$@"
    echo '</article>'
}

# print TITLE ARGUMENT...: runs vek with the arguments, and shows what it prints and the time that the library took.
print() {
    local title=$1 text time
    shift
    run "$@"
    begin "$title" 0
    printf '<pre>%s</pre>\n' "$(escape "$text")"
    command_line "$@"
    echo '</article>'
}

# strip TITLE PICTURE FILTER...: shows a picture and what each filter, a name with options, makes of it.
strip() {
    local title=$1 source=$2 filter output text time
    shift 2
    begin "$title" $(($# + 1))
    echo '<div class="pictures">'
    picture "$source" "$source"
    for filter in "$@"; do
        output=filters/${source%.png}-${filter// /}.png
        run filter "$filter" "$source" "$output"
        picture "$output" "$filter<br>$time" result
    done
    printf '</div>\n<code>vek filter NAME %s OUT</code>\n</article>\n' "$source"
}

# figures TITLE PICTURE...: shows pictures with their names.
figures() {
    local title=$1 file
    shift
    begin "$title" $#
    echo '<div class="pictures">'
    for file in "$@"; do picture "$file" "$file"; done
    printf '</div>\n</article>\n'
}

# document TITLE TEXT STYLE_SHEET ENTRIES: the whole page, of a file with sections and entries.
document() {
    cat <<HTML
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>$1</title>
<style>
$(cat "$3")
</style>
</head>
<body>
<h1>$1</h1>
<p>$2</p>
<pre>$(escape "$("$build/vek" info)")</pre>
<nav id="contents">
<h2>Contents</h2>
<ul>
$(sed -nE 's|^<h2 id="(.*)">(.*)</h2>$|<li><a class="section" href="#\1">\2</a>|p
           s|^<h3 id="(.*)">(.*)</h3>$|<a href="#\1">\2</a>|p' "$4")
</ul>
</nav>
<main>
$(cat "$4")
</div>
</main>
</body>
</html>
HTML
}

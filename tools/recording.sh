#!/usr/bin/env bash
# Draws a part of the demonstration's real output as a terminal in SVG: recording.sh OUTPUT.svg [DIR].
# Runs ./run demo, and fails with it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
output=$1
directory=${2:-$PWD}

draw() {
    awk '
        function escaped(line) { gsub(/&/, "\\&amp;", line); gsub(/</, "\\&lt;", line); gsub(/>/, "\\&gt;", line); return line }
        function row(class, line) {
            body = body sprintf("<text class=\"%s\" x=\"16\" y=\"%d\">%s</text>\n", class, 52 + 18 * rows++, escaped(line))
        }
        { sub(/\r$/, "") }
        /^== / { shown = /Deleting, cutting|next restore|Summary/ }
        shown && /^== / { row("step", $0); next }
        shown && NF { row("line", substr($0, 1, 108)) }
        BEGIN { row("prompt", "$ ./run demo"); row("gap", "...") }
        END {
            height = 52 + 18 * rows
            printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 940 %d\" role=\"img\">\n", height
            print "<title>A restore that is killed, and the next one that completes it</title>"
            print "<style>rect{fill:#14181d}text{font:13px ui-monospace,Menlo,Consolas,monospace;white-space:pre;fill:#c8d1da}"
            print ".prompt{fill:#7ee787}.step{fill:#79c0ff}.gap{fill:#6b7681}circle{fill:#3b434b}</style>"
            printf "<rect width=\"940\" height=\"%d\" rx=\"8\"/>\n", height
            print "<circle cx=\"20\" cy=\"18\" r=\"6\"/><circle cx=\"40\" cy=\"18\" r=\"6\"/><circle cx=\"60\" cy=\"18\" r=\"6\"/>"
            printf "%s</svg>\n", body
        }'
}

mkdir -p build
./run demo "$directory" | tee build/recording.txt >&2
draw <build/recording.txt >"$output"

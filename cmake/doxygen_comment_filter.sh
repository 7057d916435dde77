#!/bin/sh
# Doxygen input filter: the headers document with plain "// " comments; turn
# whole-line ones into "/// " so that Doxygen reads them as documentation.
exec sed -e 's|^\([[:space:]]*\)// |\1/// |' "$1"

#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# stalwick-convert for tests; $STALWICK_HOLD/log gets the name of each recording. A recording with
# a file of the same name in $STALWICK_HOLD is read through a pipe that trickles for minutes, once:
# its conversion can be canceled or killed in the middle.
recording=${!#}
name=$(basename "$recording" .ord)
echo "$name" >> "$STALWICK_HOLD/log"
if rm "$STALWICK_HOLD/$name" 2> /dev/null; then
    directory=$(mktemp -d "$STALWICK_HOLD/pipe.XXXXXX")
    mkfifo "$directory/$name.ord"
    {
        head -c 300000
        for _ in {1..4000}; do
            sleep 0.1
            head -c 5000 || break
        done
    } < "$recording" > "$directory/$name.ord" 2> /dev/null &
    echo $$ > "$STALWICK_HOLD/$name.pid"
    exec "$STALWICK_CONVERT" "${@:1:$#-1}" "$directory/$name.ord"
fi
exec "$STALWICK_CONVERT" "$@"

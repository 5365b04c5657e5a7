# Prints what abi/wire.txt and docs/wire-protocol.md both tell about the commands and the fields of
# their records, in the form of the tables, each row behind the number of its command:
#   28 | 12 | s32 | `targetTime` | 5 or more |
# Reads either file.

function print_row(number, a, b, c, d) {
    printf "%s | %s | %s | %s | %s |\n", number, a, b, c, d
}

# --- abi/wire.txt: "27 init request 0x4024671b size 36", then "     12 s32      targetTime  5 or more"

FILENAME ~ /\.txt$/ && /^[0-9]/ {
    number = $1
    print_row(number, number, "`" $2 "`", "0x" toupper(substr($4, 3)), $6)
}
FILENAME ~ /\.txt$/ && /^ / {
    valid = $0
    sub(/^ *[^ ]+ +[^ ]+ +[^ ]+ +/, "", valid)
    print_row(number, $1, $2, "`" $3 "`", valid)
}

# --- docs/wire-protocol.md: a table of the requests, then a table below each heading like
# "### 29 `taskStart`, 30 `taskEnd`" for the commands that the heading names

FILENAME ~ /\.md$/ && /^##/ {
    gsub(/`[^`]*`|[^0-9`]/, " ")
    named = split($0, numbers)
}
FILENAME ~ /\.md$/ && /^\| [0-9]/ {
    split($0, cell, / *\| */)
    if (sub(/^\[/, "", cell[3])) {
        sub(/\].*/, "", cell[3])
        print_row(cell[2], cell[2], cell[3], cell[4], cell[5])
    } else {
        for (i = 1; i <= named; ++i) print_row(numbers[i], cell[2], cell[3], cell[4], cell[5])
    }
}

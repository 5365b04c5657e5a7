# Prints what docs/wire-protocol.md tells about the commands and the fields of their records, each row
# behind the number of its command:
#   28 | 12 | s32 | `targetTime` | 5 or more |
# It has a table of the requests, then a table below each heading like "### 29 `taskStart`, 30
# `taskEnd`" for the commands that the heading names.

function print_row(number, a, b, c, d) {
    printf "%s | %s | %s | %s | %s |\n", number, a, b, c, d
}

/^##/ {
    gsub(/`[^`]*`|[^0-9`]/, " ")
    named = split($0, numbers)
}
/^\| [0-9]/ {
    split($0, cell, / *\| */)
    if (sub(/^\[/, "", cell[3])) {
        sub(/\].*/, "", cell[3])
        print_row(cell[2], cell[2], cell[3], cell[4], cell[5])
    } else {
        for (i = 1; i <= named; ++i) print_row(numbers[i], cell[2], cell[3], cell[4], cell[5])
    }
}

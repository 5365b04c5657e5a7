# Prints the rows that abi/wire.txt and docs/wire-protocol.md have in common, in the form of the
# latter, each behind the number of its command. Reads either file.

# "27 init request 0x4024671b size 36" of the description, and a row of the table of requests.
/^[0-9]+ [a-zA-Z0-9]+ request / {
    number = $1
    row(number, $1 " | `" $2 "` | 0x" toupper(substr($4, 3)) " | " $6)
    next
}
/^\| [0-9]+ \| \[`/ {
    name = $3
    gsub(/^\[|\]\(.*\)$/, "", name)
    row($2, $2 " | " name " | " $4 " | " $5)
    next
}

# "    12 s32 targetTime 5 or more" of the description.
/^ +[0-9]+ [us0-9char\[\]]+ +/ && FILENAME ~ /\.txt$/ {
    values = $4
    for (i = 5; i <= NF; ++i) values = values " " $i
    row(number, $1 " | " $2 " | `" $3 "` | " values)
    next
}

# "### 29 `taskStart`, 30 `taskEnd`" of the page, and the rows below it, which hold for each of them.
/^##/ { headings = /^### [0-9]+ `/ ? split($0, heading, /[^0-9]+/) : 0 }

# Reads one callgrind profile of velk_cost (names and positions uncompressed) and prints
#   what|size|operation|limit|allowed allocations|instructions a call|allocations a call
# The instructions are those between entering the library and leaving it again for a stub: the
# library's own and what it spends in the C++ and C libraries, thread and memory functions included.

function isOurs(object) { return object ~ /\/velk_cost$/ }
function isStub(object) { return object ~ /\/libvelk_stub_[a-z]*\.so$/ }

/^desc: Trigger: .*MEASURE\|/ {
    sub(/^.*MEASURE\|/, "")
    split($0, trigger, "|")
}
/^ob=/ { caller = substr($0, 4) }
/^fn=/ { callee = caller; function_ = "" }
/^cob=/ { callee = substr($0, 5) }
/^cfn=/ { function_ = substr($0, 5) }
/^calls=/ {
    # A call that was under way before collecting began counts as 0 calls.
    calls = substr($1, 7)
    getline
    if (calls > 0) {
        if (isOurs(caller) && !isOurs(callee) && !isStub(callee)) {
            inside += $2
        } else if (!isOurs(caller) && !isStub(caller) && isStub(callee)) {
            inside -= $2
        }
        if (function_ ~ /^(malloc|calloc|realloc|aligned_alloc|posix_memalign)$/) {
            allocations += calls
        }
    }
    callee = caller
}
END {
    if (!trigger[6] || !inside) {
        print "velk_cost: no measurement in " FILENAME > "/dev/stderr"
        exit 1
    }
    printf "%s|%s|%s|%s|%s|%.1f|%.2f\n", trigger[1], trigger[2], trigger[3], trigger[4],
           trigger[5], inside / trigger[6], allocations / trigger[6]
}

# Counts the test cases of one GoogleTest program: awk -v status=EXIT -v filtered=PATTERN -v requireAll=1 -f count-tests.awk
#   may-skip.txt PROGRAM.log PROGRAM.xml
# First line: PASSED FAILED SKIPPED. Then one line for each skipped test with its reason, and one for each fault that is not
# a failed test case: a crash, an exit status that no failure explains, no test at all.
function attribute(name,   start, rest) {
    start = index($0, " " name "=\"")
    if (start == 0) return ""
    rest = substr($0, start + length(name) + 3)
    return substr(rest, 1, index(rest, "\"") - 1)
}
function testName() { return attribute("classname") "." attribute("name") }
function plain(text) {
    gsub(/&#x0A;/, " ", text); gsub(/&quot;/, "\"", text); gsub(/&apos;/, "'", text)
    gsub(/&lt;/, "<", text); gsub(/&gt;/, ">", text); gsub(/&amp;/, "\\&", text)
    return text
}
function skip(name, reason) {
    if (requireAll == "1" && !(name in maySkip)) {
        failed++
        notes = notes "  failed: " name " was skipped but is required: " reason "\n"
    } else {
        skipped++
        notes = notes "  skipped: " name ": " reason "\n"
    }
}

FILENAME == ARGV[1] { sub(/#.*/, ""); if (NF > 0) maySkip[$1] = 1; next }

# The log only counts when the program did not live to write its XML.
FILENAME == ARGV[2] { if (/^\[       OK \] /) logPassed++; if (/^\[  FAILED  \] .* \([0-9]+ ms\)$/) logFailed++; next }

/^<testsuites / { complete = 1 }
/^    <testcase / {
    name = testName()
    if (attribute("status") == "notrun") { if (filtered == "") skip(name, "disabled"); next }
    if (attribute("result") == "skipped") { wantReason = 1; next }
    if (/\/>$/) { passed++; next }
    inside = 1
    hasFailure = 0
    next
}
wantReason && /^      <skipped / { skip(name, plain(attribute("message"))); wantReason = 0; next }
inside && /^      <failure / { hasFailure = 1 }
inside && /^    <\/testcase>/ { inside = 0; if (hasFailure) failed++; else passed++ }

END {
    passed += 0; failed += 0; skipped += 0
    if (!complete) {
        passed = logPassed + 0
        failed = logFailed + 1
        notes = notes "  failed: the program ended early with status " status "\n"
    } else if (status != 0 && (failed == 0 || status != 1)) {
        failed++
        notes = notes "  failed: the program ended with status " status ", which no failed test explains\n"
    } else if (passed + failed + skipped == 0 && filtered == "") {
        failed = 1
        notes = notes "  failed: the program holds no tests\n"
    }
    print passed, failed, skipped
    printf "%s", notes
}

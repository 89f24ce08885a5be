#!/bin/sh
# Fails on a source file of more than 500 lines and on a function of more than 60; then says how much of the code is
# tests. Relies on the formatting: the braces of a function stand alone, at the start of a line or, inside a class, four
# blanks from it.
set -eu
cd "$(dirname "$0")/.."

# A test's rows are one flat list. So is the work of a day, step by step.
allowed='_data\(\)|aNewOrderIsProposedCorrectedSavedAndPrinted|anImportedOrderKeepsItsLinesThroughSaveAndExport'
git ls-files '*.cpp' '*.h' | xargs awk -v allowed="$allowed" '
    function close_at(start, name) {
        if (FNR - start - 1 > 60 && name !~ allowed) {
            print FILENAME ":" start ": " FNR - start - 1 " lines: " name
            failed = 1
        }
    }
    FNR == 1 { start = 0; member = 0 }
    FNR == 501 { print FILENAME " has more than 500 lines"; failed = 1 }
    /^\{$/ { start = FNR; name = before }
    /^\}$/ && start { close_at(start, name); start = 0 }
    /^\};/ { start = 0 }
    /^[^ \t#]/ { before = $0 }
    /^    \{$/ && before_member ~ /\)( const| override| noexcept)*$/ { member = FNR; member_name = before_member }
    /^    \}$/ && member { close_at(member, member_name); member = 0 }
    /^    [^ \t#}]/ { before_member = $0 }
    NF && FILENAME ~ /^tests\// { tests++ }
    NF && FILENAME !~ /^(tests|bench)\// { program++ }
    END {
        printf "Tests: %d of the %d lines of code, %.0f %% (blank lines and bench/ left out)\n", tests,
            tests + program, 100 * tests / (tests + program)
        exit failed
    }'

#!/bin/sh
# Fails on a source file of more than 500 lines and on a function of more than 60; then says how much of the code is
# tests. Relies on the formatting: a function's braces stand alone at the start of a line.
set -eu
cd "$(dirname "$0")/.."

# A test's rows are one flat list. So is the work of a day, step by step.
allowed='_data\(\)|aNewOrderIsProposedCorrectedSavedAndPrinted|anImportedOrderKeepsItsLinesThroughSaveAndExport'
git ls-files '*.cpp' '*.h' | xargs awk -v allowed="$allowed" '
    FNR == 1 { start = 0 }
    FNR == 501 { print FILENAME " has more than 500 lines"; failed = 1 }
    /^\{$/ { start = FNR; name = before }
    /^\}$/ && start {
        if (FNR - start - 1 > 60 && name !~ allowed) {
            print FILENAME ":" start ": " FNR - start - 1 " lines: " name
            failed = 1
        }
        start = 0
    }
    /^\};/ { start = 0 }
    /^[^ \t#]/ { before = $0 }
    { if (FILENAME ~ /^tests\//) tests++; else if (FILENAME !~ /^bench\//) code++ }
    END {
        printf "Tests: %d lines, %.0f %% of the %d lines of the program\n", tests, 100 * tests / code, code
        exit failed
    }'

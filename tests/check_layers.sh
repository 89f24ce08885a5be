#!/bin/sh
# Folders may include only what lies below them; app/session.h is the one exception, plain values that all may read.
set -eu
cd "$(dirname "$0")/.."

# folder: what it may include besides itself
rules='
common:
common/ui:common
data/jet:common
data/sql:common data/jet
data:common data/jet data/sql
orders:common data
output:common data
forms:common common/ui data orders output
app:common common/ui data orders output forms
samples:common data data/jet
'
failed=0
for file in $(git ls-files '*.cpp' '*.h' | grep -v '^tests/\|^bench/'); do
    folder=${file%/*}
    case $folder in
        forms/*) folder=forms ;;
        app/*) folder=app ;;
        data/jet/*) folder=data/jet ;;
        output/*) folder=output ;;
    esac
    # The database helpers of common/ stand on the connections; nothing low includes them.
    case $file in common/db.h | common/db.cpp) folder=orders ;; esac
    allowed=$(printf '%s' "$rules" | sed -n "s|^$folder:||p")
    for target in $(sed -n 's|^#include "\([^"]*/[^"]*\)".*|\1|p' "$file"); do
        [ "$target" = app/session.h ] && continue
        into=${target%/*}
        case $into in forms/*) into=forms ;; app/*) into=app ;; data/jet/*) into=data/jet ;; output/*) into=output ;; esac
        case " $folder $allowed " in
            *" $into "*) ;;
            *)
                echo "$file includes $target, which does not lie below $folder/"
                failed=1
                ;;
        esac
    done
done
exit $failed

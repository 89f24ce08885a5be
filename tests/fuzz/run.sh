#!/bin/sh
# Runs the fuzz targets of preset "fuzz": run.sh SECONDS [TARGET...]. Inputs that were found worth keeping stay in
# build-fuzz/corpus, findings in build-fuzz/findings; "build-fuzz/tests/fuzz/TARGET FILE" repeats one.
set -eu
cd "$(dirname "$0")/../.."
seconds=$1
shift
[ $# -gt 0 ] || set -- fuzz_read fuzz_write fuzz_sql
fixtures=${SPARES_FIXTURES:-../shared/fixtures}
programs=build-fuzz/tests/fuzz
largest=150k # a larger file takes too long a run to be worth it

seeds=build-fuzz/seeds
rm -rf "$seeds"
mkdir -p "$seeds/files" "$seeds/small" "$seeds/statements" build-fuzz/findings
"$programs/fuzz_seeds" "$seeds/files"
# Checking a file, changing it and checking it again takes long: of small files it is done thousands of times.
cp "$seeds"/files/small*.mdb "$seeds/small"
if [ -d "$fixtures/access" ]; then
    find "$fixtures/access" -name '*.mdb' -size "-$largest" -exec cp {} "$seeds/files" \;
else
    echo "No folder of fixtures: the files made by the engine itself are the only seeds."
fi
chmod u+w "$seeds"/files/*
split -l 1 -a 3 tests/fuzz/statements.sql "$seeds/statements/"

for target; do
    case $target in
    fuzz_sql) kind=statements more="-max_len=600 -dict=tests/fuzz/sql.dict" ;;
    fuzz_write) kind=small more="-max_len=120000" ;;
    *) kind=files more="-max_len=400000" ;;
    esac
    mkdir -p "build-fuzz/corpus/$target"
    echo "$target: $seconds s"
    # shellcheck disable=SC2086
    "$programs/$target" $more -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=512 \
        -print_final_stats=1 -verbosity="${FUZZ_VERBOSITY:-0}" -artifact_prefix="build-fuzz/findings/$target-" \
        "build-fuzz/corpus/$target" "$seeds/$kind"
done

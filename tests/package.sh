#!/bin/sh
# Builds the Debian package from the build folder, checks it, installs it into a scratch root, and works with the
# installed program there as an ordinary user. The scratch root is this machine seen through an overlay, so that nothing
# of it is changed; needs root. "tests/package.sh inside FOLDER" is the part that runs in that root.
set -eu
cd "$(dirname "$0")/.."
repository=$(pwd)

fail() {
    echo "package: $*" >&2
    exit 1
}

# What a support person and a storekeeper do with the package, in the scratch root.
inside() {
    package=$1
    own=/usr/lib/velk-spares
    kept=/var/lib/velk-spares
    dpkg -i "$package" >/dev/null
    [ "$(stat -c '%U:%G %a' $kept)" = 'root:velk-spares 2775' ] || fail "$kept is not its group's"
    for file in SerPath.mdb Layouts.mdb; do
        [ "$(stat -c '%G %a' $kept/$file)" = 'velk-spares 664' ] || fail "$kept/$file is not its group's"
        [ "$(readlink -f $own/$file)" = "$kept/$file" ] || fail "$own/$file does not lead to $kept"
    done

    useradd --create-home --groups velk-spares storekeeper
    as_storekeeper="runuser -u storekeeper --"
    server=/home/storekeeper/dealership/server
    $as_storekeeper "$repository/build/bin/make-dealership" "${server%/server}" >/dev/null
    velk-setup $own $server | grep -v '^  ' || true
    [ "$(mdb-export -H $kept/SerPath.mdb ServerPath)" = "\"$server\"" ] || fail "the server's path was not written"

    echo '<!-- changed here -->' >>$own/Layouts/Stk_Ord.Rpt
    before=$(sha256sum $kept/SerPath.mdb $kept/Layouts.mdb $own/Layouts/Stk_Ord.Rpt)
    dpkg -i "$package" >/dev/null
    [ "$before" = "$(sha256sum $kept/SerPath.mdb $kept/Layouts.mdb $own/Layouts/Stk_Ord.Rpt)" ] ||
        fail "an upgrade replaced a database or a changed layout"

    # The installed program comes up with its login form, the remembered user filled in from the server.
    cd /home/storekeeper
    # shellcheck disable=SC2016
    $as_storekeeper xvfb-run -a sh -c 2>/dev/null '
        velk-spares & program=$!
        for turn in $(seq 100); do
            sleep 0.1
            xwininfo -root -tree | grep -q "\"Velk Spares.*(\"velk-spares\"" && break
        done
        xwininfo -root -tree | grep "(\"velk-spares\"" >windows
        kill $program'
    grep -q 'Login' windows || fail "the login form did not come up: $(cat windows)"
    echo "The installed program shows: $(cat windows)"
    # And a whole order is saved through its folder.
    $as_storekeeper env QT_QPA_PLATFORM=offscreen "$repository/build/bin/velk-tour" $own pictures >tour 2>&1 ||
        fail "the tour: $(tail tour)"
    tail -1 tour
    velk-setup $own >setup || [ $? = 1 ] || fail "$(cat setup)"
    jetcheck --password qzrt5817 $kept/*.mdb $server/DataBas/*.mdb || fail "a database is damaged"

    dpkg --purge velk-spares >/dev/null
    [ ! -e $kept ] && [ ! -e $own ] && [ ! -e /etc/velk-spares ] || fail "purging left something behind"
}

if [ "${1:-}" = inside ]; then
    inside "$2"
    exit 0
fi

(cd build && rm -rf package && cpack --config CPackConfig.cmake -B package >package.log 2>&1) || fail "$(tail build/package.log)"
package=$(ls "$repository"/build/package/*.deb)
lintian --allow-root --fail-on error,warning "$package"
appstreamcli validate --no-net build/packaging/*.metainfo.xml
desktop-file-validate packaging/velk-spares.desktop

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/upper" "$scratch/work" "$scratch/root"
export scratch package repository
unshare --mount sh -eu -c '
    mount -t overlay overlay -o "lowerdir=/,upperdir=$scratch/upper,workdir=$scratch/work" "$scratch/root"
    for folder in dev proc sys; do mount --rbind "/$folder" "$scratch/root/$folder"; done
    mount -t tmpfs tmpfs "$scratch/root/tmp"
    mkdir -p "$scratch/root/$repository"
    mount --bind "$repository" "$scratch/root/$repository"
    chmod 1777 "$scratch/root/tmp"
    chroot "$scratch/root" "$repository/tests/package.sh" inside "$package"'
echo "The package $(basename "$package") installs, works and goes."

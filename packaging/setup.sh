# Shared by ./run, ./test and .ci/run: packages, build, and where the program lies. Sourced, not run.

say() { printf '== %s\n' "$*"; }

# Packages that build the program, those that only the tests need, and those of ./test --full.
build_packages="g++ cmake ninja-build pkg-config qt6-base-dev libgl-dev libsqlite3-dev unixodbc-dev libodbc2 odbcinst
fonts-dejavu-core libreoffice-dev"
test_packages="mdbtools poppler-utils clang-format catdoc python3 cups cups-client"
full_packages="clang libclang-rt-dev clang-tidy gcovr dpkg-dev lintian appstream desktop-file-utils librsvg2-bin xvfb xauth x11-utils"

is_installed() {
    dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep -q 'ok installed'
}

# need_packages build|test|full: installs what is missing, as root or through sudo.
need_packages() {
    wanted=$build_packages
    [ "$1" = build ] || wanted="$wanted $test_packages"
    [ "$1" != full ] || wanted="$wanted $full_packages"
    # Either of the two runs the spreadsheets; a workstation keeps the one that it has.
    is_installed libreoffice-calc || wanted="$wanted libreoffice-calc-nogui"
    missing=
    for package in $wanted; do
        is_installed "$package" || missing="$missing $package"
    done
    [ -z "$missing" ] && return 0
    say "Installing$missing"
    as_root=
    [ "$(id -u)" = 0 ] || as_root=sudo
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive sh -c "apt-get update -qq && apt-get install -y -qq \
        --no-install-recommends $missing" >/dev/null
}

# build_release TARGET: "programs" for what a person starts, "all" for the tests too.
build_release() {
    say "Building"
    [ -e build/build.ninja ] || cmake --preset release >/dev/null
    cmake --build build --target "$1" -- --quiet
}

# link_program FOLDER: the program's own folder is the one it is started from; a link makes that the folder with the
# workstation's two databases.
link_program() {
    for name in velk-spares Layouts; do
        [ -e "build/bin/$name" ] && ln -sfn "$(pwd)/build/bin/$name" "$1/$name"
    done
    return 0
}

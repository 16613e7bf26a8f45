# Sourced by the scripts in this folder.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

# Configures and builds a preset: build_preset NAME [ninja targets]. What configuring says is shown when it fails.
build_preset() {
    local preset=$1 said
    shift
    said=$(cd "$root" && cmake --preset "$preset" 2>&1) || {
        echo "$said" >&2
        return 1
    }
    ninja -C "$root/build/$preset" -j "$jobs" "$@"
}

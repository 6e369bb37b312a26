#!/usr/bin/env bash
# The source folders are layers: each may include only the folders listed before it (and its
# own), in the order the top CMakeLists.txt gives. A folder and its sub-folder (platform and
# platform/framework) share a layer.
# Usage: tests/layering_test.sh SOURCE_DIR FOLDER...
set -uo pipefail
src="$1/src"
shift
folders=("$@")
index_of() {
    local i
    for i in "${!folders[@]}"; do
        [[ ${folders[$i]} == "$1" ]] && { echo "$i"; return; }
    done
    echo -1
}
failures=0
for i in "${!folders[@]}"; do
    folder=${folders[$i]}
    [[ -d $src/$folder ]] || continue
    # Only the folder's own files: a sub-folder that is a layer of its own is checked as one.
    while IFS= read -r line; do
        file=${line%%:*}
        target=$(sed -E 's/.*#include "(.*)\/[^/]*".*/\1/' <<<"$line")
        j=$(index_of "$target")
        ((j < 0 || j <= i)) && continue
        [[ ${target%%/*} == "${folder%%/*}" ]] && continue
        echo "$file includes $target/, which is listed after $folder"
        failures=$((failures + 1))
    done < <(grep -HE '^#include "[a-z_/]+/[a-z_]+\.hpp"' "$src/$folder"/*.cpp "$src/$folder"/*.hpp 2>/dev/null)
done
echo "layering: ${#folders[@]} folders, $failures includes run back up"
((failures == 0))

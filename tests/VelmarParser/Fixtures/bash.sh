#!/bin/bash
# Packs each folder that was named, or all below the working directory.
set -euo pipefail

target=${TARGET:-/tmp/packed}
declare -a folders=("$@")

pack() {
  local folder=$1
  if [[ ! -d $folder ]]; then
    echo "No folder: $folder" >&2
    return 1
  fi
  tar -czf "$target/$(basename "$folder").tar.gz" "$folder" && echo "packed $folder"
}

for folder in "${folders[@]:-.}"; do
  case $folder in
    -*) echo "unknown option" ;;
    *) pack "$folder" | tee -a log.txt ;;
  esac
done

cat <<END
$((${#folders[@]} + 1)) lines for ${USER}
END

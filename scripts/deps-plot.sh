#!/usr/bin/env bash
# Installs what scripts/plot-timeline.py needs (matplotlib), when missing. Building, testing and
# running mplsfwd do not need it.
set -euo pipefail
if ! dpkg-query -W -f='${Status}' python3-matplotlib 2>/dev/null | grep -q "install ok installed"; then
  echo "installing: python3-matplotlib" >&2
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq python3-matplotlib >/dev/null
fi

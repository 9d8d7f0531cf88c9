#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running mplsfwd need, when missing.
set -euo pipefail
packages=(cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev robin-map-dev nlohmann-json3-dev libcli11-dev pkg-config libpcap-dev tshark python3-scapy ccache)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}" >&2
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  # tshark asks whether non-root users may capture; answer no without a prompt.
  echo "wireshark-common wireshark-common/install-setuid boolean false" |
    "${sudo_cmd[@]}" debconf-set-selections
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}" >/dev/null
fi

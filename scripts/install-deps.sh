#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the server need.
# Does nothing when they are all present already.
set -euo pipefail

packages=(
  build-essential cmake g++ gcc-multilib g++-multilib python3
  libgtest-dev libgmock-dev libbenchmark-dev
  libsqlite3-dev sqlite3 nlohmann-json3-dev libcli11-dev
  libcpp-httplib-dev libpugixml-dev
  valgrind sblim-wbemcli
  clang libclang-rt-14-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if ((${#missing[@]})); then
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi

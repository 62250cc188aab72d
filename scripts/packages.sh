# Sourced by the project's commands. install_packages NAME... installs missing Debian packages, as root or with sudo;
# silent if none are missing.

install_packages() {
  local missing=() name
  for name in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Packages are missing (${missing[*]}); install them as root, or install sudo." >&2; return 1; }
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]} ..."
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Packages for building and running, and additional ones for the tests. The Python packages are only for tests.
build_packages=(g++ cmake ninja-build pkg-config libsqlite3-dev sqlite3 libexpat1-dev nettle-dev libminizip-dev mdbtools-dev nlohmann-json3-dev libnetcdf-dev libhdf5-dev libseccomp-dev libsundials-dev libsuitesparse-dev libxerces-c-dev libmuparser-dev libqcustomplot-dev qt6-base-dev qt6-svg-dev)
sample_packages=(python3)
test_packages=(graphviz netcdf-bin libgtest-dev libgmock-dev python3 parallel python3-distributed python3-jsonschema python3-netcdf4 python3-pandas python3-pip python3-pytest python3-scipy python3-setuptools python3-venv python3-wheel python3-xarray udunits-bin unzip procps xvfb)

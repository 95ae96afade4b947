#!/usr/bin/env bash
# make.sh: draws console.png anew, from a build of the preset "app" (./run makes one) and the configuration in demo.json.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
app=$root/build/app/quarl
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QUARL_STORE=sqlite:$work/demo.db XDG_CONFIG_HOME=$work
"$app/quarlctl" init >/dev/null
"$app/quarlctl" import "$root/docs/images/demo.json" >/dev/null
"$root/packaging/picture.sh" "$app/quarl-console" "$root/docs/images/console.png"
echo "Wrote docs/images/console.png"

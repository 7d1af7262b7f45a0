#!/bin/sh
# Makes everything in built/ anew from src/. The same tools make the same bytes; a failure leaves
# built/ as it was.
set -eu

device=hx8k
package=ct256

export LC_ALL=C PYTHONDONTWRITEBYTECODE=1
cd "$(dirname "$0")"

missing=
for tool in yosys nextpnr-ice40 icepack python3; do
    command -v "$tool" >/dev/null || missing="$missing $tool"
done
if [ -n "$missing" ]; then
    echo "rebuild.sh: missing:$missing" >&2
    echo "rebuild.sh: Debian has them in yosys, nextpnr-ice40, fpga-icestorm and python3" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
out=$scratch/built
mkdir "$out"

cat >"$out/device.json" <<END
{
    "part": "ice40$device-$package",
    "arch": "ice40",
    "package": "$package",
    "device": "$device",
    "speed": "${device%%[0-9]*}"
}
END

# The hierarchy is kept for the handoff; "json", unlike "write_json", leaves out the cell library.
yosys -q -p "
    read_verilog src/blinky.v
    synth_ice40 -noflatten -top blinky
    attrmap -modattr -remove src
    attrmap -remove src -remove module_not_derived -remove unused_bits
    json -o $out/blinky.netlist.json
"

place_and_route() { # seed, bitstream
    nextpnr-ice40 -q "--$device" --package "$package" --seed "$1" \
        --json "$out/blinky.netlist.json" --pcf src/blinky.pcf --asc "$scratch/$1.asc" \
        --report "$scratch/$1.report" --log "$scratch/$1.log"
    icepack "$scratch/$1.asc" "$out/$2"
}
place_and_route 1 blinky.bit
place_and_route 2 blinky_seed2.bit

python3 tools/resources.py "$scratch/1.report" "$scratch/1.log" "$out/resources.json"
python3 tools/handoff.py "$out/blinky.netlist.json" "$out/device.json" "$out/blinky.hwh"
python3 tools/params.py "$out/blinky.netlist.json" "$out/blinky_params.json"
python3 tools/init_source.py "$out/blinky.hwh" "$out/blinky_init.c"

mkdir -p built
cp "$out"/* built/

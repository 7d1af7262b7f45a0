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

place_and_route() { # seed, bitstream, device and pins
    seed=$1 bitstream=$2
    shift 2
    nextpnr-ice40 -q "$@" --seed "$seed" --json "$out/blinky.netlist.json" --asc "$scratch/$bitstream.asc" \
        --report "$scratch/$bitstream.report" --log "$scratch/$bitstream.log"
    icepack "$scratch/$bitstream.asc" "$out/$bitstream"
}
for seed in 1 2 3 4; do
    name=blinky_seed$seed.bit
    [ $seed != 1 ] || name=blinky.bit
    place_and_route $seed $name "--$device" --package "$package" --pcf src/blinky.pcf
done
# For a smaller device too, whose pins are chosen freely: what is measured needs bitstreams of other sizes.
for seed in 1 2; do
    place_and_route $seed blinky_hx1k_seed$seed.bit --hx1k --package tq144
done

python3 tools/resources.py "$scratch/blinky.bit.report" "$scratch/blinky.bit.log" "$out/resources.json"
python3 tools/handoff.py "$out/blinky.netlist.json" "$out/device.json" "$out/blinky.hwh"
python3 tools/params.py "$out/blinky.netlist.json" "$out/blinky_params.json"
python3 tools/init_source.py "$out/blinky.hwh" "$out/blinky_init.c"

mkdir -p built
cp "$out"/* built/

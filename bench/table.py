#!/usr/bin/env python3
"""Prints the results of transfer_bench as a Markdown table, each transfer beside its floor."""
import json
import sys

FLOORS = {
    "exportNew": ["floorNewSafe", "floorNewPlain"],
    "exportOneInTen": ["floorOneInTenSafe"],
    "importNew": ["floorImport"],
    "exportPreview": ["exportComponent"],
    "importPreview": ["importComponent"],
    "syncPreview": ["syncComponent"],
    "syncOneCardInTen": ["floorOneInTenSafe"],
    "syncOneContactInTen": ["floorOneInTenSafe"],
}


def main(path):
    with open(path, encoding="utf-8") as file:
        results = json.load(file)["benchmarks"]
    times = {}
    for result in results:
        name, cards = result["name"].split("/")[:2]
        times[(name, int(cards), result["aggregate_name"])] = result["real_time"]
    print("| transfer | cards | median ms | best ms | floor | floor median ms | times the floor |")
    print("|---|---:|---:|---:|---|---:|---:|")
    for name, cards, aggregate in times:
        if aggregate != "median" or name.startswith("floor"):
            continue
        median, best = times[(name, cards, "median")], times[(name, cards, "min")]
        for floor in FLOORS.get(name, [""]):
            base = times.get((floor, cards, "median"))
            beside = f"{floor} | {base:.0f} | {median / base:.2f}" if base else " | | "
            print(f"| {name} | {cards} | {median:.1f} | {best:.1f} | {beside} |")


if __name__ == "__main__":
    main(sys.argv[1])

#!/usr/bin/env python3
"""Prints the results of transfer_bench as a Markdown table, each transfer beside its floor and what is aimed at,
and draws time against cards where several sizes were measured, with other tools as dots where bench/peers has
left their times."""
import json
import os
import sys

FLOORS = {
    "exportNew": ["floorNewSafe", "floorNewPlain"],
    "exportOneInTen": ["floorOneInTenSafe"],
    "importNew": ["floorImport"],
    "exportComponent": ["floorNothingToDo"],
    "importComponent": ["floorNothingToDo"],
    "syncComponent": ["floorNothingToSync"],
    "exportPreview": ["exportComponent"],
    "importPreview": ["importComponent"],
    "syncPreview": ["syncComponent"],
    "syncOneCardInTen": ["floorOneInTenSafe"],
    "syncOneContactInTen": ["floorOneInTenSafe"],
}
# Times the first floor, at most.
AIMS = {"exportNew": 1.5, "importNew": 1.5, "exportComponent": 1.5, "importComponent": 1.5, "syncComponent": 1.5}
# Times as long for three times the cards, at most.
GROWTH = 3.2
CURVES = {
    "exportNew": ("export, all new", "#c0392b"),
    "floorNewSafe": ("its floor", "#e6b0aa"),
    "importNew": ("import, all new", "#2471a3"),
    "floorImport": ("its floor", "#a9cce3"),
    "exportComponent": ("export, nothing to do", "#1e8449"),
    "floorNothingToDo": ("its floor", "#a9dfbf"),
}


def verdict(name, cards, times):
    """Whether the aim is met, and how far it is off."""
    base = times.get((FLOORS.get(name, [""])[0], cards, "median"))
    if name not in AIMS or not base:
        return ""
    ratio = times[(name, cards, "median")] / base
    return f"{'met' if ratio <= AIMS[name] else 'not met'} (at most {AIMS[name]})"


def print_table(times):
    print("| transfer | cards | median ms | best ms | floor | floor median ms | times the floor | aim |")
    print("|---|---:|---:|---:|---|---:|---:|---|")
    for name, cards, aggregate in times:
        if aggregate != "median" or name.startswith("floor"):
            continue
        median, best = times[(name, cards, "median")], times[(name, cards, "min")]
        for number, floor in enumerate(FLOORS.get(name, [""])):
            base = times.get((floor, cards, "median"))
            beside = f"{floor} | {base:.0f} | {median / base:.2f}" if base else " | | "
            aim = verdict(name, cards, times) if number == 0 else ""
            print(f"| {name} | {cards:,} | {median:.1f} | {best:.1f} | {beside} | {aim} |")


def print_growth(times):
    for name in AIMS:
        few, many = times.get((name, 10000, "median")), times.get((name, 30000, "median"))
        if few and many:
            met = "met" if many / few <= GROWTH else "not met"
            print(f"{name}: 30,000 cards take {many / few:.1f} times as long as 10,000: {met} (at most {GROWTH})")


PEERS_COLOUR = "#7d6608"


def draw(times, peers, path):
    sizes = sorted({cards for name, cards, _ in times if name in CURVES})
    if len(sizes) < 2:
        return
    width, height, left, bottom = 760, 420, 70, 50
    longest = max([times[key] for key in times if key[0] in CURVES and key[2] == "median"] +
                  [first * 1000 for _, first, _ in peers.values()])

    def place(cards, milliseconds):
        return (left + cards / sizes[-1] * (width - left - 190),
                height - bottom - milliseconds / longest * (height - bottom - 30))

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
             'font-size="13">', f'<rect width="{width}" height="{height}" fill="white"/>']
    for step in range(5):
        x, y = place(sizes[-1], longest * step / 4)
        parts.append(f'<path d="M{left} {y:.0f}H{x:.0f}" stroke="#ddd"/>'
                     f'<text x="{left - 8}" y="{y + 4:.0f}" text-anchor="end">{longest * step / 4000:.1f} s</text>')
    for cards in sizes:
        x, y = place(cards, 0)
        parts.append(f'<text x="{x:.0f}" y="{y + 20:.0f}" text-anchor="middle">{cards:,}</text>')
    labels = []
    for name, (label, colour) in CURVES.items():
        points = [place(cards, times[(name, cards, "median")]) for cards in sizes
                  if (name, cards, "median") in times]
        if points:
            line = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
            parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
            labels.append([points[-1][1], label, colour, points[-1][0]])
    for peer, (cards, first, nothing) in peers.items():
        for name, seconds in (("first transfer", first), ("nothing to do", nothing)):
            x, y = place(cards, seconds * 1000)
            parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4" fill="{PEERS_COLOUR}"/>'
                         f'<text x="{x + 8:.1f}" y="{y + 4:.1f}" fill="{PEERS_COLOUR}">{peer}, {name}</text>')
    free = 0
    for label in sorted(labels):  # none over another
        free = max(free + 16, label[0])
        parts.append(f'<text x="{label[3] + 8:.0f}" y="{free + 4:.0f}" fill="{label[2]}">{label[1]}</text>')
    parts.append("</svg>\n")
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(parts))


def main(results, picture, peers):
    times = {}
    with open(results, encoding="utf-8") as file:
        for result in json.load(file)["benchmarks"]:
            name, cards = result["name"].split("/")[:2]
            times[(name, int(cards), result["aggregate_name"])] = result["real_time"]
    print_table(times)
    print_growth(times)
    times_of_peers = {}
    if os.path.exists(peers):
        with open(peers, encoding="utf-8") as file:
            times_of_peers = json.load(file)
    draw(times, times_of_peers, picture)


if __name__ == "__main__":
    main(*sys.argv[1:])

#!/usr/bin/env python3
"""Writes docs/PERFORMANCE.md from the results of scripts/bench.sh."""
import datetime
import json
import pathlib
import platform
import sys

results = pathlib.Path(sys.argv[1])


def load(name):
    path = results / f"{name}.json"
    return json.loads(path.read_text()) if path.exists() else None


def arg(bench, index=0):
    return bench["name"].split("/")[1 + index].split(":")[-1]


out = []
today = datetime.date.today().isoformat()
out.append("# Performance\n")
out.append(f"Measured on {today} by `make bench` (Release build) on {platform.machine()}, "
           f"{platform.system()} {platform.release()}; {len(open('/proc/cpuinfo').read().split('processor')) - 1} cores. "
           "Menus are shown on a private Xvfb. Figures are medians unless said otherwise.\n")

menus = load("foldermenu_bench")
if menus:
    ctx = menus["context"]
    out.append("## Folder menus\n")
    out.append(f"Icon theme {ctx.get('icon theme', '?')}, Qt platform {ctx.get('platform', '?')}. "
               "The floors are what a menu of that size cannot avoid: reading the folder "
               "(readdir + lstat) and showing a bare menu of as many fixed texts. Target: the "
               "root menu within 1.3x the floors' sum.\n")
    out.append("| entries | read floor ms | bare menu floor ms | floors ms | root menu ms | ratio |")
    out.append("|---:|---:|---:|---:|---:|---:|")
    for b in menus["benchmarks"]:
        if b["name"].startswith("BM_RootMenu/"):
            out.append(f"| {arg(b)} | {b['read_ms']:.2f} | {b['bare_menu_ms']:.2f} | "
                       f"{b['floors_ms']:.2f} | {b['menu_ms']:.2f} | {b['ratio']:.2f} |")
    out.append("\nIcons per entry (target: under 0.5 µs amortised, the cache kept per type):\n")
    out.append("| entries | empty cache µs/entry | kept cache µs/entry |")
    out.append("|---:|---:|---:|")
    icons = {}
    for b in menus["benchmarks"]:
        if b["name"].startswith("BM_MenuIcons/"):
            icons.setdefault(arg(b, 0), {})[arg(b, 1)] = b["us_per_entry"]
    for entries, row in icons.items():
        out.append(f"| {entries} | {row.get('1', float('nan')):.3f} | {row.get('0', float('nan')):.3f} |")
    out.append("\nSubmenus (target: 100 entries within 16 ms):\n")
    out.append("| entries | opening ms |")
    out.append("|---:|---:|")
    for b in menus["benchmarks"]:
        if b["name"].startswith("BM_SubmenuOpen/"):
            out.append(f"| {arg(b)} | {b['open_ms']:.2f} |")
    out.append("")

prefs = load("prefsfile_bench")
if prefs:
    out.append("## Preferences file\n")
    out.append("| operation | menus | time µs |")
    out.append("|---|---:|---:|")
    for b in prefs["benchmarks"]:
        op = b["name"].split("/")[0].removeprefix("BM_")
        out.append(f"| {op} | {arg(b)} | {b['real_time']:.1f} |")
    out.append("")

program = results / "program.txt"
if program.exists():
    out.append("## The running program\n")
    out.append("Under Xvfb with openbox and a session bus. Targets: start-up to the title shown "
               "within 150 ms; idle at most 0.02% of one core over 60 s with the pointer away; "
               "at most 30 MB resident.\n")
    for line in program.read_text().splitlines():
        out.append(f"- {line}")
    out.append("")

print("\n".join(out))

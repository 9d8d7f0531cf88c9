#!/usr/bin/python3
"""Draws a timeline written by `mplsfwd-sim run|bench --timeline FILE.csv` as a PNG or SVG.

usage: plot-timeline.py FILE.csv OUT.png|OUT.svg [--title TEXT]

Routes (programmed, unprogrammed, pending) are drawn against the left axis, L2 adjacencies and
decap mappings against the right one. Run scripts/deps-plot.sh first to install matplotlib (the
Debian package, for the system interpreter that the first line names).
"""
import argparse
import csv
import sys


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("csv")
    parser.add_argument("out")
    parser.add_argument("--title", default="")
    args = parser.parse_args()
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        sys.exit("plot-timeline.py: matplotlib is missing; run scripts/deps-plot.sh")
    with open(args.csv, newline="") as f:
        rows = list(csv.DictReader(f))
    if not rows:
        sys.exit(f"plot-timeline.py: {args.csv} holds no rows")
    t0 = float(rows[0]["time"])
    time = [float(r["time"]) - t0 for r in rows]
    series = {k: [int(r[k]) for r in rows] for k in rows[0] if k != "time"}

    fig, left = plt.subplots(figsize=(7, 3.6), dpi=90)
    for name, style in (("programmed", "-"), ("pending", "--"), ("unprogrammed", ":")):
        left.step(time, series[name], style, where="post", label=f"{name} routes")
    left.set_xlabel("seconds since the first sample")
    left.set_ylabel("routes")
    left.ticklabel_format(axis="y", style="plain")
    right = left.twinx()
    right.step(time, series["l2Adjacencies"], "-", color="tab:gray", where="post",
               label="L2 adjacencies", alpha=0.6)
    if any(series["decapMappings"]):
        right.step(time, series["decapMappings"], "-", color="tab:purple", where="post",
                   label="decap mappings", alpha=0.6)
    right.set_ylabel("adjacencies, mappings")
    lines = left.get_legend_handles_labels()
    more = right.get_legend_handles_labels()
    left.legend(lines[0] + more[0], lines[1] + more[1], loc="center right", fontsize=8)
    left.set_title(args.title or args.csv, fontsize=10)
    left.grid(alpha=0.3)
    fig.tight_layout()
    fig.savefig(args.out)


if __name__ == "__main__":
    main()

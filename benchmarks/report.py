#!/usr/bin/python3
"""report.py RESULTS NOT_INSTALLED PICTURE: prints a table of the benchmark results and draws a picture.

RESULTS is Google Benchmark's JSON. Each ratio compares the processor time of the measured operation with
that of the bare loop; it is the median over all rounds, with its quartiles. Operations that wait for another process also
have ratios of the time that passes.
"""

import json
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402: must follow the choice of the output

TITLES = {
    "library": "The library, relative to the bare loop that makes the same calls",
    "plain": "The library, relative to plain read and write over one buffer",
    "read": "Reading one value from a profile file, relative to fopen and fgets",
    "write": "Rewriting a profile file, relative to fopen, getc and fprintf",
    "modules": "Starting and stopping twelve modules, relative to dlopen, dlsym and dlclose",
    "draws": "Checked draws, relative to the same draws of the system's generator",
    "numbers": "8 bytes from rng::Engine over the system's generator, relative to another source",
    "provider": "Draws through the provider for OpenSSL, relative to OpenSSL's own generator",
    "growth": "Growth",
}


def load(path):
    """The benchmarks as (group, rest of the name, figures)."""
    with open(path, encoding="utf-8") as file:
        results = json.load(file)["benchmarks"]
    for result in results:
        if result.get("error_occurred"):
            sys.exit(f"{result['name']}: {result['error_message']}")
        group, rest = result["name"].split("/iterations:")[0].split("/", 1)
        yield group, rest, result


def print_table(results):
    row = "  {:<44}{:>9}{:>9}{:>9}{:>14}{:>14}"
    for group, title in TITLES.items():
        if not results[group]:
            continue
        print(f"\n{title}")
        print(row.format("", "ratio", "1/4", "3/4", "measured, us", "bare, us"))
        for name, figures in results[group]:
            if "ratio" not in figures:
                continue
            ratios = (f"{figures[key]:.3f}" for key in ("ratio", "ratio_q1", "ratio_q3"))
            times = (f"{figures[key] / 1000:.3f}" for key in ("measured_ns", "bare_ns"))
            print(row.format(name, *ratios, *times))


def resident(results):
    """Restarts and the resident memory after them, in KiB."""
    for name, figures in results["growth"]:
        if name == "Restart":
            prefix = "resident_KiB_"
            return sorted((int(key[len(prefix):]), value)
                          for key, value in figures.items() if key.startswith(prefix))
    sys.exit("the restarts were not measured")


def print_restarts(results):
    print("\nResident memory in KiB, by number of restarts with twelve plug-ins")
    for restarts, size in resident(results):
        print(f"  {restarts:<44}{size:>9.0f}")


def draw_ratios(axes, group, rows):
    rows = rows[::-1]
    middle = [figures["ratio"] for _, figures in rows]
    low = [figures["ratio"] - figures["ratio_q1"] for _, figures in rows]
    high = [figures["ratio_q3"] - figures["ratio"] for _, figures in rows]
    axes.errorbar(middle, range(len(rows)), xerr=[low, high], fmt="o", markersize=3, capsize=2)
    axes.set_yticks(range(len(rows)), [name for name, _ in rows], fontsize=7)
    axes.axvline(1, color="gray", linewidth=0.5)
    if max(middle) > 5:
        axes.set_xscale("log")
    label(axes, TITLES[group], "ratio of times: median and quartiles", None)


def draw_growth(axes, points, operation, unit):
    sizes = [size for size, _ in points]
    for key, side in (("measured_ns", "library"), ("bare_ns", "bare loop")):
        axes.plot(sizes, [figures[key] / 1000 for _, figures in points],
                  marker=".", linewidth=0.8, label=side)
    if sizes[-1] > 100:
        axes.set_xscale("log")
        axes.set_yscale("log")
    else:
        axes.set_ylim(bottom=0)
    label(axes, f"{operation}: processor time", unit, "microseconds")
    axes.legend(fontsize=7)


def draw_restarts(axes, results):
    counts, sizes = zip(*resident(results))
    axes.plot(counts, sizes, marker=".", linewidth=0.8)
    axes.set_xscale("log")
    axes.set_ylim(0, 1.2 * max(sizes))
    label(axes, "Resident memory after restarts with twelve plug-ins", "restarts", "KiB")


def label(axes, title, x, y):
    axes.set_title(title, fontsize=7)
    axes.set_xlabel(x, fontsize=7)
    axes.set_ylabel(y, fontsize=7)


def panels(results):
    """A function for each panel that has something to show."""
    for group in ("library", "plain", "read", "write", "modules", "draws", "numbers", "provider"):
        rows = [row for row in results[group] if "ratio" in row[1]]
        if rows:
            yield lambda axes, group=group, rows=rows: draw_ratios(axes, group, rows)
    for operation, unit in (("StartAndStop", "plug-ins"),
                            ("GetType", "lines of the file"), ("SetType", "lines of the file")):
        points = sorted((int(name.split("/")[1]), figures)
                        for name, figures in results["growth"] if name.startswith(operation + "/"))
        if points:
            yield lambda axes, points=points, operation=operation, unit=unit: draw_growth(
                axes, points, operation, unit)
    yield lambda axes: draw_restarts(axes, results)


def draw(results, missing, path):
    drawings = list(panels(results))
    rows = -(-len(drawings) // 3)
    figure, axes = plt.subplots(rows, 3, figsize=(15, 4 * rows), layout="constrained", squeeze=False)
    for place, drawing in zip(axes.flat, drawings):
        drawing(place)
    for place in axes.flat[len(drawings):]:
        place.remove()
    figure.suptitle(missing, fontsize=8)
    figure.savefig(path)


def main():
    results_path, missing_path, picture_path = sys.argv[1:]
    results = {group: [] for group in TITLES}
    for group, name, figures in load(results_path):
        results[group].append((name, figures))
    print_table(results)
    print_restarts(results)
    with open(missing_path, encoding="utf-8") as file:
        packages = file.read().split()
    missing = f"Not measured, because these packages are not installed: {', '.join(packages) or 'none'}"
    print(f"\n{missing}")
    draw(results, missing, picture_path)
    print(f"Picture: {picture_path}")


main()

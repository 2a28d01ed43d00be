"""Turns the JSON of a Google Benchmark run (standard input) into a Markdown table.

One row for each benchmark: median and spread of the repetitions, and this library's time divided
by that of the row, so that less than 1 means that this library is faster. "This library" is the
first implementation of a workload.
"""
import json
import statistics
import sys

UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def shown(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def workload_of(name):
    """("build", "10"), "CDataValue" for build/CDataValue/10."""
    what, _, rest = name.partition("/")
    who, _, arguments = rest.partition("/")
    return (what, arguments), who


def main():
    times = {}
    runs = json.load(sys.stdin)["benchmarks"]
    # They come in the order in which they ran, which is random.
    runs.sort(key=lambda run: (run["family_index"], run["per_family_instance_index"]))
    for run in runs:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            # Processor time: these benchmarks wait for nothing.
            times.setdefault(run["run_name"], []).append(run["cpu_time"] * UNITS[run["time_unit"]])
    medians = {name: statistics.median(values) for name, values in times.items()}
    ours = {}
    for name in times:
        ours.setdefault(workload_of(name)[0], medians[name])
    print("| workload | implementation | median | spread | this library : it |")
    print("|---|---|---|---|---|")
    for name, values in times.items():
        (what, arguments), who = workload_of(name)
        spread = f"{shown(min(values))} to {shown(max(values))}"
        ratio = ours[(what, arguments)] / medians[name]
        print(f"| {what} {arguments} | {who} | {shown(medians[name])} | {spread} | {ratio:.2f} |")


if __name__ == "__main__":
    main()

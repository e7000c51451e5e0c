#!/usr/bin/env python3
"""The table of a benchmark run: report.py RUN.json [INSTRUCTIONS.tsv] prints it as Markdown.

RUN.json          what sgbk_bench wrote with --benchmark_out
INSTRUCTIONS.tsv  a name and its instructions a character on each line, of scripts/count-instructions
"""

import collections
import json
import statistics
import sys

# The ratios to reach, on prose and on pages.
GOALS = {
    ("t2sgchar", "iconv GBK to UTF-16LE"): (3.2, 4.6),
    ("t2sgchar case", "iconv GBK to UTF-16LE"): (2.7, 4.3),
    ("t2sgchar 40 bytes", "iconv GBK to UTF-16LE"): (2.4, 4.4),
    ("dbc2gchar", "iconv GBK to UTF-16LE"): (2.8, 4.3),
    ("hzgb2gbk", "ICU HZ to GBK"): (9, 10.5),
    ("gchar2big5", "iconv GBK to BIG5"): (3.5, 4.5),
    ("decodelibpage", "iconv GBK to UTF-16LE"): (1.8, 4.5),
    ("trimgPunc", "iconv GBK to UTF-16LE"): (4, 2.4),
    ("t2sgchar then trimgPunc", "iconv GBK to UTF-16LE"): (1.6, 1.5),
}
TEXTS = ("prose", "pages")


def number(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def quartile_range(times):
    low, _, high = statistics.quantiles(times, n=4)
    return (high - low) / statistics.median(times)


def load(path):
    """The file's context, and the nanoseconds a character of every repetition by name."""
    with open(path, encoding="utf-8") as file:
        run = json.load(file)
    times = collections.defaultdict(list)
    for row in sorted(run["benchmarks"], key=lambda row: row["family_index"]):
        if row["run_type"] == "iteration":
            # A thread's own time says nothing about what two of them get done together.
            clock = "real_time" if row["name"].startswith("threads/") else "cpu_time"
            times[row["run_name"]].append(row[clock] / (row["characters"] / row["threads"]))
    return run["context"], times


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        fields = dict(line.split(":", 1) for line in file if ":" in line)
    fields = {name.strip(): value.strip() for name, value in fields.items()}
    return (f"{fields['model name']}, family {fields['cpu family']} model {fields['model']}, "
            f"{int(fields['processor']) + 1} processors")


def comparisons(median, instructions):
    yield "| operation | text | ns | instructions | against | ns | ratio | goal |"
    yield "|---|---|--:|--:|---|--:|--:|--:|"
    for name, ours in median.items():
        operation, text, who = (name.split("/") + ["", ""])[:3]
        if who != "sgbk":
            continue
        first = f"`{operation}` | {text} | {number(ours)} | {instructions.get(name, '')}"
        for other, theirs in median.items():
            if not other.startswith(f"{operation}/{text}/") or other == name:
                continue
            peer = other.split("/", 2)[2]
            goals = GOALS.get((operation, peer))
            goal = number(goals[TEXTS.index(text)]) if goals else ""
            ratio = theirs / ours
            missed = " (missed)" if goal and ratio < float(goal) else ""
            yield f"| {first} | {peer} | {number(theirs)} | {number(ratio)} | {goal}{missed} |"
            first = " | | |"


def call_costs(median):
    sizes = ("16", "100", "1000", "65536")
    yield "| operation | " + " | ".join(f"{size} bytes" for size in sizes) + " | 100 to 65536 |"
    yield "|---|" + "--:|" * (len(sizes) + 1)
    for operation in dict.fromkeys(n.split("/")[1] for n in median if n.startswith("calls/")):
        costs = [median[f"calls/{operation}/{size}"] for size in sizes]
        cells = " | ".join(number(cost) for cost in costs)
        yield f"| `{operation}` | {cells} | {number(costs[1] / costs[3])} |"


def threads(median):
    yield "| work | one thread | two threads | gain |"
    yield "|---|--:|--:|--:|"
    gains = []
    for work in ("b52sgbk", "independent instructions"):
        one, two = (median[f"threads/{work}/real_time/threads:{count}"] for count in (1, 2))
        gains.append(one / two)
        yield f"| {work} | {number(one)} | {number(two)} | {number(one / two)} |"
    yield f"| the first gain by the second | | | {number(gains[0] / gains[1])} |"


def main():
    context, times = load(sys.argv[1])
    instructions = {}
    if len(sys.argv) > 2:
        with open(sys.argv[2], encoding="utf-8") as file:
            instructions = dict(line.rstrip("\n").split("\t") for line in file)
    median = {name: statistics.median(values) for name, values in times.items()}
    rounds = min(len(values) for values in times.values())
    spreads = [quartile_range(values) for values in times.values() if len(values) > 1]
    print(f"- Date: {context['date'][:10]}")
    print(f"- Machine: {machine()}")
    print(f"- Compiler: {context['compiler']}")
    for text in ("prose", "pages"):
        print(f"- {text.capitalize()}: {context[text]}")
    print(f"- Rounds: {rounds}, with a load average of {context['load_avg'][0]:.1f} at the start.")
    if spreads:
        print(f"  The quartiles of a row's rounds lie {statistics.median(spreads):.0%} of the median "
              f"apart in the middle row, {max(spreads):.0%} in the worst.")
    tables = [comparisons(median, instructions)]
    if any(name.startswith("calls/") for name in median):
        tables.append(call_costs(median))
    if any(name.startswith("threads/") for name in median):
        tables.append(threads(median))
    for table in tables:
        print()
        print("\n".join(table))


if __name__ == "__main__":
    main()

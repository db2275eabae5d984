"""The table of a comparison, as text and as a page."""

import dataclasses
import math
import statistics


NOISE = 1.25  # what a figure may be off
FILLED = "pixels filled with a colour"  # the series of memory alone
READ = "files opened and read"  # the series of the system alone
OF_THE_MACHINE = {FILLED: "memory itself", READ: "the system itself"}
HELD_TO = {"pixels": FILLED, "themes": READ}  # a series by its first word, and what it may grow as

# How the verdicts begin that are no good ones.
NOT_MET = "NOT met"
MISSING = "MISSING"
FASTER = "FASTER than its input"


@dataclasses.dataclass
class Item:
    slug: str
    what: str
    peer: str
    target: float = 0  # of ours to the peer's time; 0 where the item has none
    aim: float = 0


def duration(seconds):
    for unit, size in (("s", 1), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= size:
            return f"{seconds / size:.3g} {unit}"
    return f"{seconds * 1e9:.3g} ns"


def fraction(ratio):
    return f"1/{round(1 / ratio)}" if 0 < ratio < 0.1 and abs(1 / ratio - round(1 / ratio)) < 1e-9 else f"{ratio:g}"


def ratio_of(pairs):
    return statistics.median(ours / peer for ours, peer in pairs)


def verdict(figure, target, aim):
    if figure > target:
        return NOT_MET
    return "met, aim too" if figure <= aim else "met"


def verdict_of(item, results, missing):
    if item.slug in missing:
        return f"{MISSING}: {missing[item.slug]}"
    return verdict(ratio_of(results[item.slug]), item.target, item.aim) if item.target else ""


def verdict_of_growth(series, growth):
    """Whether ten times the work costs ten times as much at the end, or no more than memory or the system takes then."""
    if series in OF_THE_MACHINE:
        return OF_THE_MACHINE[series]
    step = steps(growth[series])[-1]
    if step <= 10 * NOISE:
        return "as its input"
    base = HELD_TO.get(series.split()[0])
    if base in growth and step <= steps(growth[base])[-1] * NOISE:
        return "as " + OF_THE_MACHINE[base].removesuffix(" itself")
    return FASTER


def shortfalls(items, results, missing, at_rest, growth):
    """What has missed its target or could not be measured, each with its verdict."""
    verdicts = [(f"{item.what}, beside {item.peer}", verdict_of(item, results, missing)) for item in items]
    verdicts += [(row[0], row[-1]) for row in at_rest or []]
    verdicts += [(series, verdict_of_growth(series, growth)) for series in growth or {}]
    return [(what, said) for what, said in verdicts if said.startswith((NOT_MET, MISSING, FASTER))]


def table(rows):
    """Rows of texts as a table that is plain text and a page's table alike."""
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    lines = ["| " + " | ".join(text.ljust(width) for text, width in zip(row, widths)) + " |" for row in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines) + "\n"


def text(items, results, remarks, missing, at_rest, growth):
    parts = []
    if items:
        rows = [["item", "peer", "ours", "peer's", "ratio", "target", "aim", ""]]
        for item in items:
            said = verdict_of(item, results, missing)
            if item.slug in missing:
                rows.append([item.what, item.peer, "", "", "", "", "", said])
                continue
            pairs = results[item.slug]
            rows.append([item.what, item.peer, duration(statistics.median(ours for ours, _ in pairs)),
                         duration(statistics.median(peer for _, peer in pairs)), f"{ratio_of(pairs):.3g}",
                         fraction(item.target) if item.target else "", fraction(item.aim) if item.aim else "",
                         said])
        parts.append(table(rows))
        said = [f"- {item.what}: {remark}" for item in items for remark in remarks.get(item.slug, [])]
        if said:
            parts.append("\n".join(said) + "\n")
    if at_rest:
        parts.append(table([["the window", "measured", "target", "aim", ""], *at_rest]))
    if growth:
        rows = [["work", "from", "to", "cost of one at the least", "at the most", "ten times the work costs, at the steepest", "at the end", ""]]
        for series, points in growth.items():
            amounts = sorted(points)
            each = [points[amount] / amount for amount in amounts]
            rows.append([series, f"{amounts[0]:,}", f"{amounts[-1]:,}", duration(min(each)), duration(max(each)),
                         f"{max(steps(points)):.1f} times", f"{steps(points)[-1]:.1f} times",
                         verdict_of_growth(series, growth)])
        parts.append(table(rows))
        parts.append("A steeper step on the way is where the work no longer fits the processor's caches; what counts is how it "
                     "goes on at the end. Pixels that are only filled and files that are only read show what memory and the system "
                     "take by themselves then: work on pixels and on themes may grow as that does.\n")
    return "\n".join(parts)


def steps(points):
    """How much ten times the work costs, from each amount to the next."""
    amounts = sorted(points)
    return [(points[b] / points[a]) ** (1 / math.log10(b / a)) for a, b in zip(amounts, amounts[1:])]


def write(path, measured, taken, growth):
    plots = "".join(f"![{series}]({name})\n" for series, name in growth_files(growth))
    with open(path, "w", encoding="utf-8") as file:
        file.write("# Performance\n\n"
                   "Measured by `bench/compare --write`, which installs the peers, builds everything in release mode and "
                   "runs ours and each peer in turn. A ratio is the median of the pairs' ratios; under 1 is quicker than "
                   "the peer.\n\n" + "".join(f"- {line}\n" for line in taken) + "\n" + measured +
                   "\n## Cost against work\n\nBoth axes are logarithmic; the dashed line is a cost that grows as the work "
                   "does.\n\n" + plots)


def growth_files(growth):
    return [(series, "cost-" + series.replace(" ", "-") + ".svg") for series in growth]

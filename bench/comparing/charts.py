"""How the cost grows with the work: measuring it, and drawing it as SVG."""

import math
import os
import subprocess
import sys

from comparing.report import duration, growth_files

WIDTH, HEIGHT, LEFT, BOTTOM, TOP, RIGHT = 640, 400, 84, 56, 48, 44


def measure(build, progress):
    """By series, what each amount of work takes in seconds."""
    if progress:
        print("\r\033[Kcost against work ...", end="", file=sys.stderr, flush=True)
    program = os.path.join(build, "bin", "cost_bench")
    run = subprocess.run([program], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        sys.exit(f"compare: {program} has failed: {run.stderr.strip()[-500:]}")
    series = {}
    for line in run.stdout.splitlines():
        name, amount, seconds = line.split("\t")
        series.setdefault(name, {})[int(amount)] = float(seconds)
    return series


def draw(growth, folder):
    for series, name in growth_files(growth):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(chart(series, growth[series]))


def decades(low, high):
    return range(math.floor(math.log10(low) + 1e-9), math.ceil(math.log10(high) - 1e-9) + 1)


def chart(title, points):
    """Both axes logarithmic. A dashed line through the last point has the slope of a cost in proportion."""
    amounts = sorted(points)
    across, up = decades(amounts[0], amounts[-1]), decades(min(points.values()), max(points.values()))

    def x(amount):
        return LEFT + (math.log10(amount) - across[0]) / max(1, across[-1] - across[0]) * (WIDTH - LEFT - RIGHT)

    def y(seconds):
        return HEIGHT - BOTTOM - (math.log10(seconds) - up[0]) / max(1, up[-1] - up[0]) * (HEIGHT - BOTTOM - TOP)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
             f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="Inter, sans-serif" font-size="13">',
             f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>',
             f'<text x="{LEFT}" y="26" font-size="16" font-weight="600">{title[0].upper()}{title[1:]}</text>']
    for power in across:
        parts.append(f'<path d="M{x(10 ** power):.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#e5e5ea"/>')
        parts.append(f'<text x="{x(10 ** power):.1f}" y="{HEIGHT - BOTTOM + 20}" text-anchor="middle" fill="#6d6d72">'
                     f'{10 ** power:,}</text>')
    for power in up:
        parts.append(f'<path d="M{LEFT} {y(10 ** power):.1f}H{WIDTH - RIGHT}" stroke="#e5e5ea"/>')
        parts.append(f'<text x="{LEFT - 8}" y="{y(10 ** power) + 4:.1f}" text-anchor="end" fill="#6d6d72">'
                     f'{duration(10.0 ** power * 1.0000001)}</text>')
    parts.append(f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 12}" text-anchor="middle" fill="#6d6d72">'
                 f'how many; upwards the processor\'s time for them</text>')
    last = amounts[-1]
    first = max(10.0 ** across[0], last * 10.0 ** up[0] / points[last])
    parts.append(f'<path d="M{x(first):.1f} {y(points[last] * first / last):.1f}L{x(last):.1f} {y(points[last]):.1f}" '
                 'stroke="#8e8e93" stroke-dasharray="5 4" fill="none"/>')
    line = "L".join(f"{x(amount):.1f} {y(points[amount]):.1f}" for amount in amounts)
    parts.append(f'<path d="M{line}" stroke="#007aff" stroke-width="2" fill="none"/>')
    parts += [f'<circle cx="{x(amount):.1f}" cy="{y(points[amount]):.1f}" r="3.5" fill="#007aff">'
              f'<title>{amount:,}: {duration(points[amount])}</title></circle>' for amount in amounts]
    return "\n".join([*parts, "</svg>", ""])

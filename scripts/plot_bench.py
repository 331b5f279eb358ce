# SPDX-License-Identifier: MIT
"""Writes the results of a benchmark run into a document as tables, and draws a figure: JSON DOCUMENT PICTURE."""

import json
import re
import statistics
import sys

import matplotlib
import matplotlib.ticker

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

CONVERSIONS = ("Mono8", "Mono10", "Mono12", "Mono14", "Mono16", "RGB8", "RGBa8", "RGB12", "RGB14", "RGB16", "RGB10p32",
               "Mono10p", "Mono10p_NoSwap", "BayerRG8", "BayerRG12", "BayerRG16")
SIZES = ("640x480", "1280x960", "1920x1080", "2560x1920", "4096x3072")


def number(value, digits=2):
    """Formats a number; a dash for None."""
    return "–" if value is None else f"{value:.{digits}f}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" * len(head) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def best_peer(case):
    """The fastest of the peers and its median time."""
    times = [(case[counter], name) for counter, name in (("libyuv_ms", "libyuv"), ("opencv_ms", "OpenCV"))
             if counter in case]
    return f"{min(times)[1]}, {min(times)[0]:.2f}" if times else "–"


def conversion_table(cases):
    rows = []
    for name in CONVERSIONS:
        case = cases.get("convert/" + name)
        if case:
            rows.append([f"`{name}`", number(case["median_ms"]), number(case["times_copy"]), best_peer(case),
                         number(case.get("times_faster"))])
    return table(["format", "ms", "copy's time / ours", "fastest peer, ms", "peer's time / ours"], rows)


def other_table(cases):
    rows = []

    def add(what, case, counter, digits=2):
        if case in cases and counter in cases[case]:
            rows.append([what, number(cases[case][counter], digits)])

    for name in ("gray", "color", "palette"):
        add(f"picture of a converted frame, {name}: times faster than Qt", "render/" + name, "times_faster", 1)
    add("the same, palette: a plain copy's time / ours", "render/palette", "times_copy")
    for name in ("Mono8", "Mono12", "RGB8", "BayerRG8"):
        add(f"`{name}`, 640 x 480, all threads: times faster than one", "convert/small/" + name, "times_faster")
    for name in ("Mono8", "RGB8"):
        for size in ("1920x1080", "4096x3072"):
            case = f"screen/{name}/{size}"
            add(f"`{name}` {size} to the screen: processor time, as a part of OpenCV's", case, "cpu_ratio")
            add(f"`{name}` {size} to the screen: frames a second, beside OpenCV's", case, "times_faster")
    for name in ("Mono8", "RGB8"):
        for size in ("1920x1080", "4096x3072"):
            add(f"`{name}` {size}: ms from announcing a frame to painting it, beyond its conversion",
                f"display/paced/{name}/{size}", "beyond_conversion_ms")
    gains = [case["psnr_gain_db"] for name, case in cases.items() if name.startswith("mosaic/") and "psnr_gain_db" in case]
    if gains:
        rows.append([f"demosaiced photographs, dB above OpenCV's bilinear: median of {len(gains)}",
                     number(statistics.median(gains), 1)])
        rows.append(["the same: least and most", f"{min(gains):.1f} to {max(gains):.1f}"])
    for name, what in (("closed", "source closed"), ("set_up", "source set up"), ("running", "acquisition running")):
        add(f"window at rest, {what}: % of a processor", "rest/window/" + name, "cpu_percent")
    return table(["what", "figure"], rows)


def view_table(cases):
    rows = []
    for name in ("Mono8", "RGB8"):
        for zoom, what in (("fit", "scaled to fit"), ("100", "at 100 %"), ("800", "at 800 %")):
            case = cases.get(f"paint/{name}/{zoom}", {})
            for ratio in ("150", "200"):
                if f"pixel_cost_at_{ratio}" in case:
                    rows.append([f"`{name}` {what}, {int(ratio) / 100:g} device pixels a logical one: "
                                 "cost of a device pixel, in units of that at 1",
                                 number(case[f"pixel_cost_at_{ratio}"])])
    for name, what in (("Mono8", "8-bit grey"), ("RGBa8", "four bytes a pixel")):
        case = cases.get(f"shrink/{name}/4096x3072", {})
        for mode in ("mean", "maximum"):
            if f"{mode}_to_read" in case:
                rows.append([f"{what}, shrunk by {mode} to 1280 x 960 and painted: time, in units of reading the "
                             "picture once", number(case[f"{mode}_to_read"])])
    for kind, what in (("value_only", "values alone"), ("with_position", "values with positions")):
        for name in ("Mono8", "Mono16", "RGB8", "RGB16"):
            case = cases.get(f"values/{kind}/{name}/ratio_1.0", {})
            if "values_cpu_ms" in case:
                rows.append([f"`{name}`, {what} in {case['cells']:.0f} cells on 3840 x 2160: ms of processor time",
                             number(case["values_cpu_ms"], 1)])
    for name in ("Mono8", "RGB8"):
        case = cases.get(f"window/pointed/{name}/640x480", {})
        if "overhead_percent" in case:
            rows.append([f"`{name}` 640 x 480 with the pointer over the image: the window beyond the bare surface, %",
                         number(case["overhead_percent"], 1)])
    return table(["what", "figure"], rows)


def megapixels(size):
    width, height = map(int, size.split("x"))
    return width * height / 1e6


def curve(cases, prefix, counter):
    points = []
    for size in SIZES:
        case = cases.get(f"{prefix}/{size}", {})
        if counter in case:
            points.append((megapixels(size), case[counter]))
    return zip(*points) if points else None


def draw(cases, path):
    ours, opencv, libyuv = "#0b6e99", "#c0504d", "#e0a030"
    figure, panels = plt.subplots(1, 2, figsize=(11, 4.4), constrained_layout=True)
    for panel, title, kind, suffix, formats in (
        (panels[0], "Conversion", "convert", "cpu_ms", ("Mono12", "RGB8", "BayerRG8")),
        (panels[1], "From the frame to the screen", "screen", "cpu_ms_per_frame", ("Mono8", "RGB8")),
    ):
        for name, style in zip(formats, ("-o", "--s", ":^")):
            for peer, prefix, color in (("Vistrel", "", ours), ("OpenCV", "opencv_", opencv),
                                        ("libyuv", "libyuv_", libyuv)):
                points = curve(cases, f"{kind}/{name}", prefix + suffix)
                if points:
                    panel.plot(*points, style, color=color, label=f"{peer}, {name}", markersize=4, linewidth=1.4)
        panel.set(title=title, xlabel="megapixels a frame", ylabel="processor time a frame, ms", xscale="log",
                  yscale="log")
        panel.set_xticks([megapixels(size) for size in SIZES], minor=False)
        panel.xaxis.set_minor_locator(matplotlib.ticker.NullLocator())
        panel.xaxis.set_major_formatter(lambda value, _: f"{value:.1f}")
        panel.yaxis.set_major_formatter(lambda value, _: f"{value:g}")
        panel.yaxis.set_minor_formatter(matplotlib.ticker.NullFormatter())
        panel.grid(True, which="both", alpha=0.25)
        panel.legend(fontsize=8)
    figure.savefig(path, dpi=110, metadata={"Software": None})


def replace(text, mark, content):
    """Replaces the content between the two comments with the mark."""
    pattern = re.compile(rf"(<!-- {mark} -->\n).*?(<!-- end -->)", re.DOTALL)
    if not pattern.search(text):
        sys.exit(f"there is no place for {mark}")
    return pattern.sub(lambda found: f"{found[1]}\n{content}\n\n{found[2]}", text)


def main(figures, document, picture):
    with open(figures, encoding="utf-8") as file:
        run = json.load(file)
    cases = {case["name"].split("/iterations:")[0]: case
             for case in run["benchmarks"] if not case.get("error_occurred")}
    context = run["context"]
    with open(document, encoding="utf-8") as file:
        text = file.read()
    text = replace(text, "machine", f"Taken on {context['date'][:10]} with {context['num_cpus']} processors of "
                   f"{context['mhz_per_cpu'] / 1000:.1f} GHz, load {context['load_avg'][0]:.1f} at the start.")
    text = replace(text, "conversions", conversion_table(cases))
    text = replace(text, "view", view_table(cases))
    text = replace(text, "others", other_table(cases))
    with open(document, "w", encoding="utf-8") as file:
        file.write(text)
    draw(cases, picture)


if __name__ == "__main__":
    main(*sys.argv[1:])

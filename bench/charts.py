"""The charts of docs/performance.md, drawn by gnuplot."""
import subprocess

HEAD = """\
set terminal svg size {width},{height} font "sans-serif,12" background "white" enhanced
set output "{output}"
set encoding utf8
set border linecolor rgb "#555555"
set tics textcolor rgb "#222222"
set grid linecolor rgb "#dddddd" linetype 1 linewidth 0.5
"""
AHEAD, BEHIND = 0x2B7BBA, 0xD9541E
RATIOS = ", ".join([f'"1/{n}" {1 / n}' for n in (100, 50, 20, 10, 5, 2)]
                   + [str(n) for n in (1, 2, 5, 10, 20, 50, 100, 200, 500)])
# Distinct to colour-blind eyes too: ours, then the peers'.
OURS = ["#0b5394", "#2b9ed8", "#00796b", "#7fbf3f"]
PEERS = ["#d9541e", "#8a6d3b", "#888888", "#c2185b"]


def gnuplot(script, output, width, height):
    script = HEAD.format(width=width, height=height, output=output) + script
    subprocess.run(["gnuplot", "-"], input=script, text=True, check=True)


def escaped(text):
    return text.replace("_", r"\\_")


def lines(points):
    return "\n".join(" ".join(map(str, point)) for point in points)


def ratios(groups, output):
    """Bars from 1 to the mean ratio, with a line over the range of what the mean is of.

    groups: group -> peer -> (mean, least, most); from the top down.
    """
    bars, names, headings = [], [], []
    y = 0
    for group, peers in groups.items():
        headings.append(f'set label "{{/:Bold {escaped(group)}}}" '
                        f"at screen 0.015, first {-y} front boxed")
        for peer, (mean, least, most) in peers.items():
            y += 1
            names.append(f'"{escaped(peer)}" {-y}')
            bars.append((-y, mean, least, most))
        y += 1.4
    low = min([bar[2] for bar in bars] + [0.5]) / 1.15
    high = max([bar[3] for bar in bars] + [2]) * 1.15
    script = f"""\
$bars << EOD
{lines(bars)}
EOD
set logscale x
set xrange [{low}:{high}]
set yrange [{0.5 - y}:0.8]
set xtics ({RATIOS})
set xlabel "a peer's time / this library's, logarithmic: to the right of 1 this library is faster"
set ytics scale 0 ({", ".join(names)})
set grid xtics noytics
set key off
set lmargin 26
set rmargin 8
set style textbox opaque noborder margins 0.5,0.1
{chr(10).join(headings)}
set arrow from 1, graph 0 to 1, graph 1 nohead linecolor rgb "#222222" linewidth 1.5
set style fill solid noborder
plot $bars using 2:1:(1):2:($1-0.36):($1+0.36):($2 < 1 ? {BEHIND} : {AHEAD}) \\
       with boxxyerror linecolor rgb variable, \\
     $bars using 2:1:3:4 with xerrorbars linecolor rgb "#222222" linewidth 1 pointtype 0, \\
     $bars using ({high}):1:(sprintf($2 < 9.95 ? "%#.2g" : "%.0f", $2)) \\
       with labels left offset 0.6,0 textcolor rgb "#222222"
"""
    gnuplot(script, output, 860, int(17 * y) + 80)


def tics(least, most):
    """The decades, and between few of them 2 and 5 of each."""
    decades = [decade for decade in (10**exponent for exponent in range(10))
               if least <= 10 * decade and decade <= most]
    steps = (1, 2, 5) if len(decades) <= 3 else (1,)
    return ", ".join(str(step * decade) for decade in decades for step in steps)


def curves(unit, panels, output):
    """Time over size, both logarithmic: a panel for each operation, a line for each contender."""
    columns = 2
    rows = -(-len(panels) // columns)
    script = f"""\
set multiplot layout {rows},{columns}
set logscale xy
set xlabel "{unit}"
set ylabel "ns"
set format "%.0s%c"
set tics scale 0.8,0
set key tmargin center horizontal Left reverse samplen 2 maxcols 2 font ",11"
set lmargin 9
"""
    for operation, contenders in panels.items():
        points = [point for line in contenders.values() for point in line]
        sizes, times = zip(*points)
        for axis, values, margin in (("x", sizes, 1.02), ("y", times, 1.3)):
            least, most = min(values) / margin, max(values) * margin
            script += f"set {axis}range [{least}:{most}]\nset {axis}tics ({tics(least, most)})\n"
        plots = []
        ours, peers = iter(OURS), iter(PEERS)
        for index, (who, points) in enumerate(contenders.items()):
            mine = who.startswith("comnlib")
            script += f"$line{index} << EOD\n{lines(points)}\nEOD\n"
            plots.append(f"$line{index} with linespoints pointtype 7 pointsize 0.3 "
                         f'linecolor rgb "{next(ours if mine else peers)}" '
                         f'linewidth {2.5 if mine else 1.5} title "{escaped(who)}"')
        script += f'set key title "{{/:Bold {escaped(operation)}}}"\nplot ' + ", ".join(plots) + "\n"
    gnuplot(script + "unset multiplot\n", output, 860, 360 * rows)

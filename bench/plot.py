"""Draws how far areas are from their goals: a bar each, on a logarithmic scale around the goal, the best first; as SVG."""
import math
from xml.sax.saxutils import escape

STYLE = """
  svg { background: #ffffff; font: 12px system-ui, sans-serif; }
  text { fill: #1f2328; } .faint { fill: #59636e; }
  .panel { fill: #ffffff; } .grid { stroke: #d1d9e0; } .goal { stroke: #1f2328; stroke-width: 1.5; }
  .reached { fill: #1a7f37; } .missed { fill: #bc4c00; }
  @media (prefers-color-scheme: dark) {
    svg { background: #0d1117; }
    text { fill: #f0f6fc; } .faint { fill: #9198a1; }
    .panel { fill: #0d1117; } .grid { stroke: #3d444d; } .goal { stroke: #f0f6fc; }
    .reached { fill: #3fb950; } .missed { fill: #f0883e; }
  }
"""
LABELS, FIGURES, WIDTH = 400, 72, 960  # where labels end, the room for figures at both ends, and the whole
TOP, STEP, BAR, BOTTOM = 64, 20, 12, 34
LINES = (0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20)
FARTHEST = 25  # times better or worse than the goal: what is farther is drawn there


def label_of(area, peer):
    return "%s (%s)" % (area, peer) if peer else area


def draw(areas):
    """`areas`: name, peer and distance, the goal being 1 and less being better."""
    areas = sorted(areas, key=lambda area: area[2])
    reach = max([2.0] + [max(distance, 1 / max(distance, 1e-9)) for _, _, distance in areas])
    reach = math.log(min(reach, FARTHEST) * 1.1)
    middle, half = (LABELS + WIDTH) / 2, (WIDTH - LABELS) / 2 - FIGURES

    def x_of(distance):
        return middle + half * max(-1.0, min(1.0, math.log(max(distance, 1e-9)) / reach))

    bottom = TOP + STEP * len(areas)
    height = bottom + BOTTOM
    parts = ['<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d" role="img">'
             % (WIDTH, height, WIDTH, height),
             "<title>Ours against the goal, by area</title><style>%s</style>" % STYLE,
             '<rect class="panel" width="100%" height="100%"/>',
             '<text x="12" y="22" font-size="15" font-weight="600">Ours against the goal</text>',
             '<text class="faint" x="12" y="42">What it takes, as a share of what the goal allows: left of 1 is better than '
             'the goal. Logarithmic. In brackets the peer that the goal is told by.</text>']
    for line in LINES:
        if abs(math.log(line)) < reach:
            parts.append('<line class="%s" x1="%.1f" x2="%.1f" y1="%d" y2="%d"/>'
                         % ("goal" if line == 1 else "grid", x_of(line), x_of(line), TOP - 8, bottom))
            parts.append('<text class="faint" x="%.1f" y="%d" text-anchor="middle">%g</text>'
                         % (x_of(line), bottom + 18, line))
    for number, (area, peer, distance) in enumerate(areas):
        y = TOP + STEP * number
        reached = distance <= 1
        end = x_of(distance)
        parts.append('<text x="%d" y="%d" text-anchor="end">%s</text>'
                     % (LABELS, y + BAR - 2, escape(label_of(area, peer))))
        parts.append('<rect class="%s" x="%.1f" y="%d" width="%.1f" height="%d" rx="2"/>'
                     % ("reached" if reached else "missed", min(end, middle), y, max(2.0, abs(end - middle)), BAR))
        parts.append('<text class="faint" x="%.1f" y="%d" text-anchor="%s">%.2f%s</text>'
                     % (end - 6 if reached else max(end, middle + 2) + 6, y + BAR - 2, "end" if reached else "start",
                        distance, "" if reached else " missed"))
    return "\n".join(parts + ["</svg>"]) + "\n"

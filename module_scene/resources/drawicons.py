#!/usr/bin/env python3
"""Draws the module's 32x32 toolbar and menu icons (run from this folder).

Plain Python: shapes are rasterised on a 4x larger canvas, averaged down and
written as RGBA PNG with zlib, so the icons can be redrawn anywhere.
"""
import math
import struct
import zlib

SIZE = 32
SCALE = 4
N = SIZE * SCALE

RED = (210, 40, 40, 255)
GREEN = (40, 160, 60, 255)
BLUE = (40, 90, 210, 255)
YELLOW = (240, 200, 40, 255)
ORANGE = (240, 140, 30, 255)
MAGENTA = (220, 40, 220, 255)
CYAN = (60, 190, 220, 255)
GREY = (120, 120, 130, 255)
DARK = (40, 40, 50, 255)
WHITE = (250, 250, 250, 255)


class Canvas:
    def __init__(self):
        self.pixels = [[(0, 0, 0, 0)] * N for _ in range(N)]

    def _put(self, x, y, color):
        if 0 <= x < N and 0 <= y < N:
            r, g, b, a = color
            if a == 255:
                self.pixels[y][x] = color
                return
            dr, dg, db, da = self.pixels[y][x]
            alpha = a / 255.0
            self.pixels[y][x] = (int(r * alpha + dr * (1 - alpha)), int(g * alpha + dg * (1 - alpha)),
                                 int(b * alpha + db * (1 - alpha)), max(a, da))

    def fill(self, inside, color):
        for y in range(N):
            for x in range(N):
                if inside((x + 0.5) / SCALE, (y + 0.5) / SCALE):
                    self._put(x, y, color)

    def line(self, x0, y0, x1, y1, color, width=2.0):
        def inside(x, y):
            dx, dy = x1 - x0, y1 - y0
            length2 = dx * dx + dy * dy or 1e-9
            t = max(0.0, min(1.0, ((x - x0) * dx + (y - y0) * dy) / length2))
            px, py = x0 + t * dx - x, y0 + t * dy - y
            return px * px + py * py <= (width / 2.0) ** 2
        self.fill(inside, color)

    def polyline(self, points, color, width=2.0, closed=False):
        pairs = list(zip(points, points[1:]))
        if closed:
            pairs.append((points[-1], points[0]))
        for (a, b) in pairs:
            self.line(a[0], a[1], b[0], b[1], color, width)

    def polygon(self, points, color):
        def inside(x, y):
            result = False
            j = len(points) - 1
            for i in range(len(points)):
                xi, yi = points[i]
                xj, yj = points[j]
                if (yi > y) != (yj > y) and x < (xj - xi) * (y - yi) / (yj - yi) + xi:
                    result = not result
                j = i
            return result
        self.fill(inside, color)

    def circle(self, cx, cy, r, color, width=None):
        if width is None:
            self.fill(lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r, color)
        else:
            self.fill(lambda x, y: abs(math.hypot(x - cx, y - cy) - r) <= width / 2.0, color)

    def arc(self, cx, cy, r, start, end, color, width=2.5, arrow=True):
        steps = 24
        points = [(cx + r * math.cos(start + (end - start) * i / steps),
                   cy - r * math.sin(start + (end - start) * i / steps)) for i in range(steps + 1)]
        self.polyline(points, color, width)
        if arrow:
            ex, ey = points[-1]
            tangent = end + math.pi / 2 * (1 if end > start else -1)
            tx, ty = math.cos(tangent), -math.sin(tangent)
            nx, ny = -ty, tx
            self.polygon([(ex + tx * 5, ey + ty * 5), (ex + nx * 4, ey + ny * 4), (ex - nx * 4, ey - ny * 4)], color)

    def arrow(self, x0, y0, x1, y1, color, width=2.5):
        dx, dy = x1 - x0, y1 - y0
        length = math.hypot(dx, dy)
        ux, uy = dx / length, dy / length
        self.line(x0, y0, x1 - ux * 4, y1 - uy * 4, color, width)
        self.polygon([(x1, y1), (x1 - ux * 7 - uy * 4, y1 - uy * 7 + ux * 4),
                      (x1 - ux * 7 + uy * 4, y1 - uy * 7 - ux * 4)], color)

    def png(self):
        rows = []
        for y in range(SIZE):
            row = bytearray([0])
            for x in range(SIZE):
                total = [0, 0, 0, 0]
                for sy in range(SCALE):
                    for sx in range(SCALE):
                        r, g, b, a = self.pixels[y * SCALE + sy][x * SCALE + sx]
                        total[0] += r * a
                        total[1] += g * a
                        total[2] += b * a
                        total[3] += a
                alpha = total[3]
                if alpha:
                    row += bytes([total[0] // alpha, total[1] // alpha, total[2] // alpha, alpha // (SCALE * SCALE)])
                else:
                    row += bytes(4)
            rows.append(bytes(row))

        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

        header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"".join(rows), 9))
                + chunk(b"IEND", b""))


def cube(c, x, y, s, front, top, side):
    d = s * 0.45
    c.polygon([(x, y + d), (x + s, y + d), (x + s, y + d + s), (x, y + d + s)], front)
    c.polygon([(x, y + d), (x + d, y), (x + d + s, y), (x + s, y + d)], top)
    c.polygon([(x + s, y + d), (x + d + s, y), (x + d + s, y + s), (x + s, y + d + s)], side)


def wire_box(c, x, y, s, color, width=1.6):
    d = s * 0.45
    front = [(x, y + d), (x + s, y + d), (x + s, y + d + s), (x, y + d + s)]
    back = [(px + d, py - d) for (px, py) in front]
    c.polyline(front, color, width, closed=True)
    c.polyline(back, color, width, closed=True)
    for a, b in zip(front, back):
        c.line(a[0], a[1], b[0], b[1], color, width)


def cursor(c, x, y, color=DARK):
    c.polygon([(x, y), (x, y + 16), (x + 4, y + 12), (x + 7, y + 18), (x + 9, y + 17), (x + 6, y + 11),
               (x + 11, y + 11)], color)


def padlock(c, shackle_open):
    c.polygon([(8, 15), (24, 15), (24, 29), (8, 29)], YELLOW)
    c.circle(16, 21, 2, DARK)
    if shackle_open:
        c.arc(21, 10, 5, math.pi, 0, GREY, width=3, arrow=False)
        c.line(16, 10, 16, 15, GREY, 3)
    else:
        c.arc(16, 10, 5, math.pi, 0, GREY, width=3, arrow=False)
        c.line(11, 10, 11, 15, GREY, 3)
        c.line(21, 10, 21, 15, GREY, 3)


def axes_pair(c, horizontal, vertical):
    c.arrow(5, 27, 29, 27, horizontal)
    c.arrow(5, 27, 5, 3, vertical)
    c.polygon([(9, 23), (25, 23), (25, 7), (9, 7)], (200, 200, 210, 150))


def icons():
    drawings = {}

    def icon(name):
        def register(function):
            drawings[name] = function
            return function
        return register

    @icon("scenemodule")
    def _(c):
        cube(c, 3, 5, 18, BLUE, (110, 150, 240, 255), (30, 60, 150, 255))

    @icon("clippingplane")
    def _(c):
        c.polygon([(2, 22), (12, 8), (30, 8), (20, 22)], (60, 190, 220, 180))
        c.line(6, 27, 26, 3, RED, 2.5)

    @icon("lightsource")
    def _(c):
        for i in range(8):
            angle = i * math.pi / 4
            c.line(16 + 9 * math.cos(angle), 16 + 9 * math.sin(angle), 16 + 14 * math.cos(angle),
                   16 + 14 * math.sin(angle), ORANGE, 2)
        c.circle(16, 16, 7, YELLOW)

    @icon("addline")
    def _(c):
        c.line(4, 26, 22, 8, GREEN, 2.5)
        c.circle(4, 26, 3, DARK)
        c.circle(22, 8, 3, DARK)
        c.line(24, 24, 31, 24, BLUE, 2.5)
        c.line(27.5, 20.5, 27.5, 27.5, BLUE, 2.5)

    @icon("plane")
    def _(c):
        c.polygon([(2, 24), (10, 8), (30, 8), (22, 24)], GREY)
        c.polyline([(2, 24), (10, 8), (30, 8), (22, 24)], DARK, 1.5, closed=True)

    @icon("spherebox")
    def _(c):
        wire_box(c, 3, 6, 20, MAGENTA)
        c.circle(15, 17, 7, GREEN)

    @icon("sphere")
    def _(c):
        c.circle(16, 16, 12, GREEN)
        c.circle(12, 12, 4, (140, 220, 150, 255))

    @icon("alignmodels")
    def _(c):
        c.polygon([(3, 26), (13, 26), (8, 14)], BLUE)
        c.polygon([(19, 26), (29, 26), (24, 14)], ORANGE)
        c.arrow(10, 8, 22, 8, DARK, 2)

    @icon("alignpresetcenters")
    def _(c):
        c.line(3, 16, 29, 16, GREY, 1.5)
        for x, color in ((6, RED), (16, GREEN), (26, BLUE)):
            c.circle(x, 16, 4, color)

    @icon("alignxy")
    def _(c):
        axes_pair(c, RED, GREEN)

    @icon("alignxz")
    def _(c):
        axes_pair(c, RED, BLUE)

    @icon("alignyz")
    def _(c):
        axes_pair(c, GREEN, BLUE)

    @icon("deselectallfaces")
    def _(c):
        c.polygon([(3, 28), (15, 6), (27, 28)], ORANGE)
        c.line(8, 8, 28, 28, RED, 3)
        c.line(28, 8, 8, 28, RED, 3)

    @icon("fittoview")
    def _(c):
        for (x, y, dx, dy) in ((3, 3, 1, 1), (29, 3, -1, 1), (3, 29, 1, -1), (29, 29, -1, -1)):
            c.line(x, y, x + 8 * dx, y, DARK, 2)
            c.line(x, y, x, y + 8 * dy, DARK, 2)
        cube(c, 9, 9, 10, BLUE, (110, 150, 240, 255), (30, 60, 150, 255))

    @icon("hide")
    def _(c):
        c.polygon([(2, 16), (9, 9), (23, 9), (30, 16), (23, 23), (9, 23)], WHITE)
        c.polyline([(2, 16), (9, 9), (23, 9), (30, 16), (23, 23), (9, 23)], DARK, 1.5, closed=True)
        c.circle(16, 16, 4, DARK)
        c.line(4, 28, 28, 4, RED, 2.5)

    @icon("measure")
    def _(c):
        c.polygon([(1, 20), (20, 1), (31, 12), (12, 31)], YELLOW)
        for i in range(1, 6):
            x, y = 1 + i * 3.2, 20 - i * 3.2
            length = 6 if i % 2 else 3.5
            c.line(x, y, x + length * 0.7, y + length * 0.7, DARK, 1.2)

    @icon("delete")
    def _(c):
        c.line(6, 6, 26, 26, RED, 4)
        c.line(26, 6, 6, 26, RED, 4)

    @icon("rotate")
    def _(c):
        c.arc(16, 16, 10, math.pi * 0.9, -math.pi * 0.6, DARK)

    @icon("rotatex")
    def _(c):
        c.arc(16, 16, 10, math.pi * 0.9, -math.pi * 0.6, RED)

    @icon("rotatey")
    def _(c):
        c.arc(16, 16, 10, math.pi * 0.9, -math.pi * 0.6, GREEN)

    @icon("rotatez")
    def _(c):
        c.arc(16, 16, 10, math.pi * 0.9, -math.pi * 0.6, BLUE)

    @icon("selectface")
    def _(c):
        c.polyline([(3, 28), (15, 4), (29, 28)], GREY, 1.5, closed=True)
        c.polygon([(9, 24), (15, 12), (21, 24)], ORANGE)

    @icon("addselectedpoint")
    def _(c):
        c.circle(12, 18, 6, RED)
        c.line(20, 7, 30, 7, BLUE, 2.5)
        c.line(25, 2, 25, 12, BLUE, 2.5)

    @icon("setuplines")
    def _(c):
        c.line(3, 8, 29, 8, RED, 2.5)
        c.line(3, 16, 29, 16, GREEN, 2.5)
        c.line(3, 24, 29, 24, BLUE, 2.5)

    @icon("setuppoints")
    def _(c):
        for (x, y, color) in ((7, 8, RED), (20, 6, GREEN), (26, 18, BLUE), (11, 22, ORANGE), (18, 27, MAGENTA)):
            c.circle(x, y, 3.2, color)

    @icon("bbox")
    def _(c):
        wire_box(c, 3, 6, 18, MAGENTA, 2)

    @icon("translate")
    def _(c):
        c.arrow(16, 16, 16, 2, DARK)
        c.arrow(16, 16, 16, 30, DARK)
        c.arrow(16, 16, 2, 16, DARK)
        c.arrow(16, 16, 30, 16, DARK)

    @icon("viewscene")
    def _(c):
        c.polygon([(2, 4), (30, 4), (30, 28), (2, 28)], WHITE)
        c.polygon([(2, 4), (30, 4), (30, 9), (2, 9)], BLUE)
        c.polyline([(2, 4), (30, 4), (30, 28), (2, 28)], DARK, 1.5, closed=True)
        cube(c, 10, 12, 9, BLUE, (110, 150, 240, 255), (30, 60, 150, 255))

    @icon("selectnone")
    def _(c):
        cursor(c, 6, 4)
        c.circle(22, 22, 7, RED, width=2.2)
        c.line(17, 27, 27, 17, RED, 2.2)

    @icon("selectmodel")
    def _(c):
        cube(c, 13, 12, 12, BLUE, (110, 150, 240, 255), (30, 60, 150, 255))
        cursor(c, 3, 3)

    @icon("selectpoint")
    def _(c):
        c.circle(23, 23, 5, RED)
        cursor(c, 3, 3)

    @icon("selectnextpoint")
    def _(c):
        c.polyline([(4, 28), (16, 6), (28, 28)], GREY, 1.5, closed=True)
        c.circle(16, 6, 4, RED)
        c.circle(16, 6, 5.5, DARK, width=1.2)

    @icon("object-locked")
    def _(c):
        padlock(c, False)

    @icon("object-unlocked")
    def _(c):
        padlock(c, True)

    @icon("fileopen")
    def _(c):
        c.polygon([(2, 8), (12, 8), (14, 11), (28, 11), (28, 27), (2, 27)], (200, 160, 40, 255))
        c.polygon([(6, 15), (31, 15), (27, 27), (2, 27)], YELLOW)

    return drawings


if __name__ == "__main__":
    for name, draw in sorted(icons().items()):
        canvas = Canvas()
        draw(canvas)
        with open("image/%s.png" % name, "wb") as out:
            out.write(canvas.png())

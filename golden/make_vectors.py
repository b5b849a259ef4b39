#!/usr/bin/env python3
"""Writes the golden vectors of the camera's measurement chain next to this file.

The chain is calculated here a second time, apart from the library, with the same rounding steps.
    make_vectors.py          writes the files
    make_vectors.py --check  proves known values, then compares the files with what would be written
docs/golden-vectors.md describes the files.
"""
import math
import random
import struct
import sys
from collections import Counter, namedtuple
from pathlib import Path

ZERO_C = 273.15
BACKGROUND = 0.05 * math.pow(298.15, 4.0)
BREAKPOINTS = (0.0, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0)
CO2 = (1.0, 0.984817, 0.965717, 0.939283, 0.90215, 0.839717, 0.785883, 0.722717, 0.625117, 0.5504,
       0.477317)
H2O = (1.0, 0.99665, 0.991683, 0.98335, 0.967033, 0.921967, 0.847233, 0.719933, 0.460917, 0.213433,
       0.050583)
SATURATION = tuple(map(float, """  0.0431 0.0485 0.0545 0.0612 0.0687 0.0769 0.0861 0.0962 0.1075
    0.12 0.134 0.149 0.166 0.1849 0.205 0.227 0.252 0.279 0.308 0.341 0.376 0.415 0.458 0.505 0.556
    0.611 0.672 0.738 0.81 0.888 0.973 1.066 1.166 1.275 1.393 1.52 1.658 1.808 1.971 2.145 2.33
    2.54 2.76 2.99 3.25 3.52 3.82 4.13 4.47 4.84 5.18 5.55 5.94 6.35 6.79 7.25 7.74 8.26 8.81 9.39
    10.0 10.64 11.33 12.05 12.81 13.61 14.45 15.34 16.28 17.3 18.3 19.4 20.5 21.7 23.0 24.3 25.7
    27.2 28.7 30.3 32.0 33.7 35.6 37.5 39.5 41.6 43.6 46.1 48.5 51.0 53.6 56.3 59.2 62.1 65.2 68.4
    71.9 75.3 78.9""".split()))  # g/m3, whole degrees from -49 to 49

Table = namedtuple("Table", "name min_ad max_ad base temps ads")
Params = namedtuple("Params", "emiss dist offset env humid reflec")


class LeftOut(Exception):
    """The row proves nothing: "close" to a boundary, or its result is left "open"."""


def single(x):
    """The nearest float32. Of one + - * / on float32 operands this is the exact float32 result."""
    return struct.unpack("f", struct.pack("f", x))[0]


def near(x, boundary):
    """Leaves the row out when a double and a boundary are too close for every maths library."""
    if abs(x - boundary) <= 1e-11 * max(1.0, abs(boundary)):
        raise LeftOut("close")


def store(x):
    """A double result kept as float32, if the last bits of the double cannot decide which one."""
    margin = 1e-11 * max(1.0, abs(x))
    if single(x - margin) != single(x + margin):
        raise LeftOut("close")
    return single(x)


def root_c(power):
    """Degrees Celsius of a fourth power of kelvin, which is kept as float32 on the way."""
    if power < 0:
        raise LeftOut("open")
    return store(math.pow(store(power), 0.25) - ZERO_C)


def surface(t):
    """A table temperature as a surface of emissivity 0.95 before 25 degrees."""
    return root_c(0.95 * math.pow(t + ZERO_C, 4.0) + BACKGROUND)


def blackbody(t):
    """The inverse of surface()."""
    return root_c((math.pow(t + ZERO_C, 4.0) - BACKGROUND) / 0.95)


def segment(keys, value):
    """The first pair of neighbouring keys that encloses the value, both ends included."""
    for i in range(len(keys) - 1):
        if keys[i] <= value <= keys[i + 1]:
            return i
    raise LeftOut("open")


def cal_temp(table, ad):
    if ad < table.min_ad:
        return "L", ad & 0xFFFF, -4001.0
    if ad > table.max_ad:
        return "H", ad & 0xFFFF, 4001.0
    i = segment(table.ads, ad)
    rise = single((ad - table.ads[i]) * (table.temps[i + 1] - table.temps[i]))
    t = single(single(rise / (table.ads[i + 1] - table.ads[i])) + table.temps[i])
    return "OK", ad & 0xFFFF, surface(t)


def interpolate_ad(table, a):
    i = segment(table.temps, a)
    counts = single(float(table.ads[i + 1] - table.ads[i]) * single(a - table.temps[i]))
    return single(single(counts / (table.temps[i + 1] - table.temps[i])) + table.ads[i])


def cal_ad(table, t):
    a = blackbody(t)
    if a < table.temps[0]:
        return "L", table.ads[0], a
    if a > table.temps[-1]:
        return "H", table.ads[-1], a
    return "OK", int(interpolate_ad(table, a)), a


def cal_delta_ad(table, t):
    a = blackbody(t)
    if table.temps[0] <= a <= table.temps[-1]:
        return single(interpolate_ad(table, a) - 32768.0)
    low, span = table.ads[0] - 32768, table.temps[0] - 30
    if span == 0:
        raise LeftOut("open")
    line = single(single(low * single(a - 30.0)) / span)
    if line != single(low * (a - 30.0) / span):
        raise LeftOut("open")  # only rows on which single and double evaluation agree
    return line


def enclosing(x):
    if x < 0:
        return 0, 0
    if x > 200:
        return 9, 10
    if x in BREAKPOINTS:
        return (BREAKPOINTS.index(x),) * 2
    k = segment(BREAKPOINTS, x)
    return k, k + 1


def curve(values, x):
    lower, upper = enclosing(x)
    if lower == upper:
        return single(values[lower])
    below, above = BREAKPOINTS[lower], BREAKPOINTS[upper]
    r = (above - x) / (above - below) * (values[lower] - values[upper]) + values[upper]
    near(r, 0.0)
    return 0.0 if r < 0 else store(r)


def precipitable_water(env, humid, dist):
    """Millimetres of water in the path."""
    saturation = single(SATURATION[max(0, min(98, int(single(env + 49.0))))])
    return single(single(single(saturation * humid) * float(dist)) / 1000.0)


def transmission(env, humid, dist):
    water = curve(H2O, precipitable_water(env, humid, dist))
    return single(water * curve(CO2, single(dist / 1000.0)))


def saturation_pressure(env):
    return store(math.pow(10.0, 7.5 * env / (env + 237.3) + 0.66077))


def dewpoint(env, humid):
    e = math.log10(single(saturation_pressure(env) * humid))
    return store((0.66077 - e) * 237.3 / (e - 8.16077))


def object_temp(t, p, trans, drift):
    """The object's temperature, not yet rounded; -inf if the reading holds no radiation of it."""
    observed = math.pow(t + ZERO_C, 4.0) / single(p.emiss * trans)
    reflected = math.pow(p.reflec + ZERO_C, 4.0) * single(1.0 - p.emiss) / p.emiss
    air = math.pow(p.env + ZERO_C, 4.0) * single(1.0 - trans) / single(trans * p.emiss)
    w = (observed - reflected) - air
    if abs(w) <= 1e-11 * (observed + reflected + air):
        raise LeftOut("close")
    return -math.inf if w < 0 else math.pow(w, 0.25) - ZERO_C + p.offset - drift


def classify(v, lo, hi):
    """Status and temperature; exactly 2 degrees outside is still OK."""
    if v < lo - 2:
        return "L", float(lo)
    if lo - 2 < v < lo:
        return "LE", v
    if v > hi + 2:
        return "H", float(hi)
    return ("HE" if hi < v < hi + 2 else "OK"), v


def ad_to_temp(table, delta, p, trans, limits, drift, ad):
    corrected = (ad + delta) % 2**32
    status, _, temp = cal_temp(table, corrected)
    if status == "OK":
        v = object_temp(temp, p, trans, drift)
        for boundary in (limits[0] - 2, limits[0], limits[1], limits[1] + 2):
            near(v, boundary)
        status, temp = classify(v, *limits)
        temp = store(temp) if temp == v else temp
    return status, temp, corrected % 2**16, (corrected - ad) % 2**16


def temp_to_ad(table, delta, p, trans, t):
    if t < -60.0:
        return "L", "-", t
    if t > 4000.0:
        return "H", "-", t
    power = math.pow(store(t + ZERO_C - p.offset), 4.0) * trans * p.emiss
    power += math.pow(p.reflec + ZERO_C, 4.0) * single(1.0 - p.emiss) * trans
    power += math.pow(p.env + ZERO_C, 4.0) * single(1.0 - trans)
    status, ad, _ = cal_ad(table, root_c(power))
    return status, (ad - delta) % 2**16 if status == "OK" else ad, t


# What goes into the files

def curved(name, slope, temps, *limits):
    """A table on a radiation curve through (30, 32768) with the given slope per degree there."""
    def planck(t):
        return 1.0 / (math.exp(1500.0 / (t + ZERO_C)) - 1.0)
    gain = slope / (planck(30.5) - planck(29.5))
    ads = tuple(round(32768 + gain * (planck(t) - planck(30))) for t in temps)
    return Table(name, *(limits or (ads[0], ads[-1])), 30, tuple(temps), ads)


def params(emiss=0.95, dist=5, offset=0, env=25, humid=0.6, reflec=25):
    return Params(*map(single, (emiss, dist, offset, env, humid, reflec)))


TABLES = (
    Table("default", 0, 45056, 30, (-20, 400), (28672, 45056)),
    curved("rising", 100, range(-40, 181, 10)),
    curved("wide", 30, range(-20, 421, 10)),
    curved("cut", 60, range(-40, 181, 10), 31000, 45000),
    Table("two", 30000, 41000, 25, (5, 95), (30000, 41000)),
    Table("uneven", 1200, 65000, 30, (-45, -30, -7, 0, 3, 25, 26, 80, 200),
          (1200, 4100, 15000, 19000, 20800, 32000, 32500, 50000, 65000)),
)
RISING = TABLES[1]
NORMAL, BARE = params(), params(emiss=1, dist=0)
NARROW, MIDDLE, BROAD = (-20, 150), (0, 400), (-100, 900)
EMISSIVITIES = [n / 10 for n in range(1, 11)]
FAR = [params(*p) for p in (
    (0.95, 1000.9, 0, 20, 0.5, 20), (0.8, 3000, 0, 30, 0.7, 25), (0.6, 10000, 0, 10, 0.4, 5),
    (1, 20000, 0, -10, 0.9, -10), (0.9, 100000, 0, -30, 0.5, -30), (0.5, 5000, 1.5, 35, 0.9, 40))]
RANDOM = random.Random(20).random  # random() alone is the same in every version of Python


def between(low, high):
    return single(round(low + (high - low) * RANDOM(), 2))


def pick(items):
    return items[int(len(items) * RANDOM())]


def pick_params():
    emiss, dist = pick(EMISSIVITIES + [0.8, 0.9, 0.95] * 4), pick((0, 1, 5, 7.9, 50, 300, 2500))
    return params(emiss, dist, pick((0, 0, 0, between(-5, 5))), between(-20, 45), between(0.1, 1),
                  between(-10, 60))


def lowest_ad(table):
    return max(table.ads[0], table.min_ad)


def pick_ad(table):
    return pick(range(lowest_ad(table), min(table.ads[-1], table.max_ad) + 1))


def table_row(table):
    return *table[:4], ",".join(f"{t}:{ad}" for t, ad in zip(table.temps, table.ads))


def start_of_row(table, shutter, p):
    trans = transmission(p.env, p.humid, int(p.dist))
    if trans == 0:
        raise LeftOut("open")
    return table.name, shutter, cal_delta_ad(table, shutter), *p, trans


def ad_to_temp_row(table, shutter, p, limits, drift, corrected=None, ad=None):
    *_, trans = start = start_of_row(table, shutter, p)
    delta = int(start[2])
    ad = corrected - delta if ad is None else ad
    if not 0 <= ad <= 65535:
        raise LeftOut("not a raw value")
    if isinstance(limits, int):  # so far from the result are the limits to be, for every status
        v = object_temp(cal_temp(table, ad + delta)[2], p, trans, drift)
        if v == -math.inf:
            raise LeftOut("without radiation")
        low = math.floor(v) + limits if limits > 0 else math.ceil(v) + limits - 170
        limits = low, low + 170
    return *start, *limits, drift, ad, *ad_to_temp(table, delta, p, trans, limits, drift, ad)


def ad_to_temp_cases():
    for table in TABLES:
        for corrected in (*table.ads[:2], *table.ads[-2:], table.min_ad - 1, table.min_ad,
                          table.max_ad, table.max_ad + 1):
            yield table, 30.0, BARE, MIDDLE, 0.0, corrected
            yield table, 26.5, NORMAL, NARROW, 0.0, corrected
        for shutter, ads in ((15.0, [32768]), (30.0, [32768]), (41.25, [32768]), (-70.0, [0, 900]),
                             (10.0, [0, 1, 137, 700]), (60.0, [0, 65000, 65535])):
            for ad in ads:  # the shutter's own count, and sums below 0 and above 65535
                yield table, shutter, NORMAL, NARROW, 0.0, None, ad
        for p in FAR:
            yield table, 28.0, p, BROAD, 0.0, pick_ad(table)
        for emiss in EMISSIVITIES[:4]:  # warm surroundings outshine the reading
            yield (table, 30.0, params(emiss, reflec=180), NARROW, 0.0, lowest_ad(table) + 999)
        for distance in (1, 2, 3, 9, -1, -2, -3, -9):
            yield table, 30.0, pick_params(), distance, 0.0, pick_ad(table)
            yield table, 26.5, BARE, distance, between(-3, 3), pick_ad(table)
    for emiss in (*EMISSIVITIES, 0.001):
        yield RISING, 30.0, params(emiss), BROAD, 0.0, 36000
    for offset, drift in ((100, 0), (-100, 0), (2.5, 1.25), (-2.5, -1.25), (0, 4.8), (0, 1.6)):
        yield RISING, 30.0, params(offset=offset), BROAD, single(drift), 36000
    while True:
        table = pick(TABLES)
        yield (table, between(8, 52), pick_params(), pick((NARROW, MIDDLE, BROAD, BROAD)),
               pick((0.0,) * 5 + (between(-4, 5),)), pick_ad(table))


def temp_to_ad_row(table, shutter, p, t):
    *_, trans = start = start_of_row(table, shutter, p)
    return *start, t, *temp_to_ad(table, int(start[2]), p, trans, t)


def temp_to_ad_cases():
    for table in TABLES:
        for t in (-60.0, single(-60.001), -61.0, 4000.0, single(4000.01), -20.0, 0.0, 150.0, 400.0):
            yield table, 20.0, NORMAL, t
        for end in (surface(table.temps[0]), surface(table.temps[-1]), 25.0, 150.0):
            for step in (-0.5, -0.01, 0.0, 0.01, 0.5):
                yield table, 35.0, BARE, single(end + step)
        for p in (*FAR, params(offset=100), params(offset=-100)):
            yield table, 28.0, p, between(0, 150)
    while True:
        table = pick(TABLES)
        yield table, between(8, 52), pick_params(), between(table.temps[0], table.temps[-1])


def transmission_cases():
    for env in (-60, -50, -49.5, -49, -48, -0.5, 0, 0.5, 1 - 2**-24, 1, 48.75, 49, 49.5, 100):
        yield env, 0.6, 700  # the last float32 below 1 counts as 1 degree
    for dist in (-5, 0, 1, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, 250000):
        yield 20, 0, dist  # dry air
    for dist in (40, 100, 200, 400, 1000, 2000, 4000, 10000, 20000, 40000, 42000, 90000):
        yield 11, 0.5, dist  # water on the breakpoints, then beyond the last one
    yield from ((25, 0.6, 5), (25, 0.6, 100), (20, 0.5, 1000), (30, 0.9, 10000))
    while True:
        yield between(-45, 48), between(0.05, 1), int(10 ** (5 * RANDOM()))


def transmission_row(env, humid, dist):
    env, humid = single(env), single(humid)
    return env, humid, dist, transmission(env, humid, dist)


def dewpoint_cases():
    yield from ((25, 0.6), (25, 1), (0, 0.5), (-40, 0.3), (60, 0.95), (20, 0.01), (10, 0.5))
    while True:
        yield between(-30, 50), between(0.05, 1)


def dewpoint_row(env, humid):
    return single(env), single(humid), dewpoint(single(env), single(humid))


def conversion_row(table, operation, argument):
    result = {"calTemp": lambda: (*cal_temp(table, argument), "-"),
              "calAD": lambda: (*cal_ad(table, argument), "-"),
              "calDeltaAD": lambda: ("-", "-", "-", cal_delta_ad(table, argument))}[operation]()
    return table.name, operation, argument, *result


def conversion_cases():
    for table in TABLES:
        for ad in (*table.ads[:2], *table.ads[-2:], table.ads[0] + 1, max(table.min_ad - 1, 0),
                   table.min_ad, table.max_ad, table.max_ad + 1, pick_ad(table), pick_ad(table)):
            yield table, "calTemp", ad
        low, high = surface(table.temps[0]), surface(table.temps[-1])
        for t in (low, high, single(low - 0.01), single(high + 0.01), -60.0, 500.0, 25.0,
                  surface(table.temps[1]), between(low, high), between(low, high)):
            yield table, "calAD", t
            yield table, "calDeltaAD", t


START = "table shutterTemp shutterTerm emiss dist offset envTemp humid reflecTemp transmission "
SHEETS = (  # file, title, columns, row, cases, number of rows (or as many as there are cases)
    ("tables.tsv", "Calibration tables; an entry is degrees Celsius:counts.",
     "name minAD maxAD baseTemp entries", table_row, lambda: zip(TABLES), None),
    ("ad_to_temp.tsv", "Raw AD value to object temperature.",
     START + "rangeMin rangeMax deltaTemp ad status temp correctAD deltaAD",
     ad_to_temp_row, ad_to_temp_cases, 400),
    ("temp_to_ad.tsv", "Object temperature to raw AD value; - is a field not written.",
     START + "temperature status ad temp", temp_to_ad_row, temp_to_ad_cases, 250),
    ("transmission.tsv", "Atmospheric transmission.", "envTemp humid dist transmission",
     transmission_row, transmission_cases, 60),
    ("dewpoint.tsv", "Dew point.", "envTemp humid dewpoint", dewpoint_row, dewpoint_cases, 20),
    ("table_conversion.tsv", "The table alone; - is a field not written.",
     "table operation argument status ad temp deltaAD", conversion_row, conversion_cases, None),
)


def text(value):
    """A float in the fewest digits that give the same float32 back; anything else as it is."""
    if not isinstance(value, float):
        return str(value)
    return next(s for s in (f"{value:.{n}g}" for n in range(6, 10)) if single(float(s)) == value)


def sheet(title, columns, row, cases, count):
    rows, left = {}, Counter()
    for case in cases():
        try:
            rows["\t".join(map(text, row(*case)))] = None  # the same row twice is one row
        except LeftOut as reason:
            left[str(reason)] += 1
        if len(rows) == count:
            break
    note = f"{len(rows)} rows; left out: {left['close']} close to a boundary, {left['open']} open"
    return "\n".join([f"# {title}", "# " + note, columns.replace(" ", "\t"), *rows, ""]), note


# Values known before this calculation; after ~ to as many decimals as are given
LOW = Table("", 1000, 45056, 30, (-20, 400), (1000, 45056))
FLAT, DEFAULT, HUMID = Table("", 0, 10, 30, (20, 30), (0, 10)), TABLES[0], single(0.6)
KNOWN = """
surface(25.0) == 25; blackbody(25.0) == 25; cal_temp(FLAT, 5) == ("OK", 5, 25.0)
surface(-20.0) ~ -17.1251; surface(400.0) ~ 391.7594; blackbody(400.0) ~ 408.3594
cal_temp(DEFAULT, 0x9000)[0] == "OK"; cal_temp(DEFAULT, 0x9000)[2] ~ 185.1285
cal_temp(DEFAULT, 0xB000)[0] == "OK"; cal_temp(DEFAULT, 0xB000)[2] ~ 391.7594
cal_temp(DEFAULT, 0xB001) == ("H", 0xB001, 4001); cal_temp(LOW, 999) == ("L", 999, -4001)
cal_temp(LOW, 1000)[0] == "OK"; cal_temp(RISING, RISING.ads[3])[2] == surface(-10)
cal_ad(DEFAULT, surface(190.0)) == ("OK", 36864, 190); cal_ad(DEFAULT, -50.0)[:2] == ("L", 28672)
cal_ad(DEFAULT, -50.0)[2] == blackbody(-50.0); cal_delta_ad(DEFAULT, surface(-20.0)) ~ -4096.000
interpolate_ad(DEFAULT, -20.0) - 32768 == -4096; cal_delta_ad(DEFAULT, 30.0) ~ -2135.5215
32768 + int(cal_delta_ad(DEFAULT, 30.0)) == 30633; cal_temp(DEFAULT, 30633)[2] ~ 30.0127
single(1.001) ~ 1.0010000467; single(0.001) >= 0.001; abs(single(-100.001)) < 100.001
object_temp(50.0, params(1, 0, 1.5), 1.0, 0.25) ~ 51.250000000
classify(-21.5, -20, 150) == ("LE", -21.5); classify(-22.5, -20, 150) == ("L", -20)
classify(151, -20, 150) == ("HE", 151); classify(152.5, -20, 150) == ("H", 150)
classify(-22, -20, 150) == ("OK", -22)
ad_to_temp(DEFAULT, 0, NORMAL, 0.5, NARROW, 0.0, 0xB001)[:2] == ("H", 4001)
temp_to_ad(DEFAULT, 0, NORMAL, 1.0, -61.0) == ("L", "-", -61)
temp_to_ad(DEFAULT, 0, NORMAL, 1.0, 4000.0) == ("H", 45056, 4000)
saturation_pressure(25.0) ~ 23.7465; single(saturation_pressure(25.0) * HUMID) ~ 14.2479
dewpoint(25.0, HUMID) ~ 16.6953; SATURATION[69] == 17.3; len(SATURATION) == 99
precipitable_water(25.0, HUMID, 5) ~ 0.069000; curve(H2O, single(0.069)) ~ 0.998844
curve(CO2, single(0.005)) ~ 0.999620; transmission(25.0, HUMID, 5) ~ 0.998465
precipitable_water(20.0, 0.5, 1000) ~ 8.65000; curve(H2O, single(8.65)) ~ 0.867411
curve(CO2, 1.0) == single(0.939283); transmission(20.0, 0.5, 1000) ~ 0.814745
transmission(25.0, HUMID, 0) == 1; transmission(25.0, HUMID, 100) ~ 0.969732
precipitable_water(30.0, single(0.9), 10000) ~ 272.700; transmission(30.0, single(0.9), 10000) == 0
precipitable_water(-49.5, 1.0, 1000) ~ 0.043100; precipitable_water(-60.0, 1.0, 1000) ~ 0.043100
precipitable_water(49.0, 1.0, 1000) ~ 78.9000; precipitable_water(80.0, 1.0, 1000) ~ 78.9000
enclosing(50.0) == (8, 8); enclosing(50.5) == (8, 9); enclosing(-1.0) == (0, 0)
enclosing(250.0) == (9, 10); enclosing(single(0.2)) == (1, 2)"""


def holds(statement):
    expression, tilde, known = statement.partition(" ~ ")
    value = eval(expression)  # of the text above only
    return f"{value:.{len(known.partition('.')[2])}f}" == known if tilde else value


def main(check):
    wrong = 0
    for statement in KNOWN.strip().replace("\n", "; ").split("; ") if check else ():
        right = holds(statement)
        wrong += not right
        print("ok   " if right else "WRONG", statement)
    for name, *description in SHEETS:
        path = Path(__file__).resolve().parent / name
        content, note = sheet(*description)
        print(f"{name}: {note}")
        if not check:
            path.write_bytes(content.encode("ascii"))
        elif not path.exists() or path.read_bytes() != content.encode("ascii"):
            wrong += 1
            print("WRONG", name, "is not what make_vectors.py writes")
    return 1 if wrong else 0


if __name__ == "__main__":
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit("usage: make_vectors.py [--check]")
    sys.exit(main(bool(sys.argv[1:])))

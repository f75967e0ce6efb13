"""The bar of buttons over the page, and the band under a camera housing."""

import pytest
from PIL import Image, ImageChops, ImageColor
from rig.site import WALK, page_picture
from rig.unreliable import NOTICE
from rig.waiting import wait_for

BLACK = (0, 0, 0)
BAR_ALPHA, DISABLED = 0.72, 0.3
BACK, FORWARD, RELOAD, HOME = BUTTONS = (32, 86, 140, 194)  # Their middles in the bar.
GAP = 59  # Between the first two of them.
ALL = {"showBack": True, "showForward": True, "showRefresh": True, "showHome": True}
NONE = dict.fromkeys(ALL, False)
HOUSING = {"avoidNotch": True, "notchBarColor": "pageBackground"}

# Settings, the inset of the screen, pixels to the point; the bar's left, top, right and bottom in points.
PLACES = [
    ({**HOUSING, **ALL, "navPosition": "topLeft"}, 32, 1, (28, 60, 254, 112)),
    ({**ALL, "navPosition": "topCenter", "avoidNotch": False}, 32, 1, (399, 60, 625, 112)),
    ({**NONE, "showHome": True, "navPosition": "topRight", "avoidNotch": False}, 32, 1, (932, 28, 996, 80)),
    ({**ALL, "navPosition": "bottomLeft", "avoidNotch": True}, 0, 1, (28, 688, 254, 740)),
    ({**HOUSING, **ALL, "showRefresh": False, "showHome": False, "navPosition": "bottomCenter",
      "notchBarColor": "black"}, 32, 1, (453, 688, 571, 740)),
    ({**HOUSING, **ALL, "navPosition": "bottomRight"}, 32, 2, (258, 304, 484, 356)),
]


class View:
    """What of the bar and the band is seen on an output of a bed."""

    def __init__(self, bed, inset=0, scale=1, output=None):
        self.bed, self.inset, self.scale = bed, inset, scale
        self.output = output or next(iter(bed.display.outputs()))

    def bar(self, colour, band):
        """The box, in points, of all that is not the page in this colour and the band above it; None for nothing."""
        picture = self.bed.display.picture(self.output)
        width, height = (side // self.scale for side in picture.size)
        expected = Image.new("RGB", (width, height), band)
        expected.paste(page_picture((width, height - self.inset), colour), (0, self.inset))
        box = ImageChops.difference(picture, expected.resize(picture.size, Image.NEAREST)).getbbox()
        return box and tuple(side / self.scale for side in box)

    def wait(self, place, colour, band=None):
        wait_for(f"bar at {place} over {colour}", lambda: self.bar(colour, band or colour) == place)

    def pixel(self, x, y):
        return self.bed.display.picture(self.output).getpixel((round(x * self.scale), round(y * self.scale)))

    def alphas(self, place):
        """Of the four buttons of a bar: by how much of white there is in their brightest points."""
        picture = self.bed.display.picture(self.output).convert("L")
        bar = picture.getpixel((place[0] + 4, place[1] + 26))
        boxes = [(x - 24, place[1] + 2, x + 24, place[3] - 2) for x in (place[0] + middle for middle in BUTTONS)]
        return [(picture.crop(box).getextrema()[1] - bar) / (255 - bar) for box in boxes]


@pytest.mark.on("no window manager")
@pytest.mark.parametrize("settings, inset, scale, place", PLACES, ids=[row[0]["navPosition"] for row in PLACES])
def test_bar_stands_where_it_was_put(bed, settings, inset, scale, place):
    begin(bed, inset, scale=scale, **settings)
    is_kept_free = inset and settings["avoidNotch"]
    view = View(bed, inset if is_kept_free else 0, scale)
    view.wait(place, WALK[0], BLACK if settings.get("notchBarColor") == "black" else None)
    left, top, _, bottom = place
    page = ImageColor.getrgb(WALK[0])
    assert view.pixel(left + 1, top + 1) == page, "the corner is not round"
    assert is_near(view.pixel(left + 4, (top + bottom) / 2), mix(BLACK, page, BAR_ALPHA))


@pytest.mark.on("openbox")
def test_buttons_go_where_they_say_and_leave_the_keyboard_to_the_page(bed):
    place = (399, 688, 625, 740)
    begin(bed, 32, navPosition="bottomCenter", **ALL, **HOUSING)
    view = View(bed, 32)

    def tap(button):
        bed.display.click(place[0] + button, place[1] + 26)

    def is_shown(page, back, forward):
        view.wait(place, WALK[page - 1])
        alphas = pytest.approx([1 if on else DISABLED for on in (back, forward, True, True)], abs=0.02)
        wait_for("states", lambda: view.alphas(place) == alphas)
        bed.display.press("space")  # Works a button that has the keyboard.
        assert bed.seen_keys()[0] == ["keydown Space", "keyup Space"]

    is_shown(1, back=False, forward=False)
    bed.display.click(500, 300)
    is_shown(2, back=True, forward=False)
    bed.display.click(500, 300)
    is_shown(3, back=True, forward=False)
    tap(BACK)
    is_shown(2, back=True, forward=True)
    tap(FORWARD)
    is_shown(3, back=True, forward=False)
    tap(FORWARD)
    tap(GAP)
    tap(BACK)
    is_shown(2, back=True, forward=True)
    tap(BACK)
    is_shown(1, back=False, forward=True)

    asked = walked(bed)
    tap(RELOAD)
    wait_for("request", lambda: walked(bed) == [*asked, "/walk/1"])
    is_shown(1, back=False, forward=True)
    bed.display.click(500, 300)
    is_shown(2, back=True, forward=False)
    bed.display.click(500, 300)
    is_shown(3, back=True, forward=False)
    assert "/walk/4" not in bed.site.paths
    bed.display.click(500, 300)
    wait_for("notice", lambda: view.pixel(500, 10) == view.pixel(500, 300) == NOTICE)
    bed.display.click(500, 300)  # Must not reach the page.
    tap(HOME)
    is_shown(1, back=True, forward=False)
    assert bed.site.paths.count("/walk/4") == 1


@pytest.mark.on("three outputs")
def test_bar_and_band_follow_the_run_from_screen_to_screen(bed):
    screens = bed.display
    begin(bed, 32, "DUMMY1", navPosition="topRight", **ALL, **HOUSING)
    with_housing, without = View(bed, 32, output="DUMMY1"), View(bed, output="DUMMY0")
    with_housing.wait((546, 60, 772, 112), WALK[0])
    screens.plug("DUMMY1", "1280x1024", "2304x0")
    with_housing.wait((1026, 60, 1252, 112), WALK[0])
    screens.unplug("DUMMY1")
    without.wait((770, 28, 996, 80), WALK[0])
    screens.plug("DUMMY1", "800x600", "2304x0")
    with_housing.wait((546, 60, 772, 112), WALK[0])


def begin(bed, inset, output="screen", scale=1, **settings):
    """Seals the first page of the walk on an output with a camera housing."""
    bed.settings(url=bed.site.url + "walk/1", **settings)
    bed.choose(output)
    bed.start(environment={"QUILLOX_SAFE_AREA_TOP": f"{output}={inset}", "GDK_SCALE": str(scale)})
    bed.hold_to_seal()


def walked(bed):
    return [path for path in bed.site.paths if path.startswith("/walk/")]


def mix(over, under, alpha):
    return tuple(alpha * a + (1 - alpha) * b for a, b in zip(over, under))


def is_near(colour, expected):
    return all(abs(a - b) <= 2 for a, b in zip(colour, expected))

"""Other clients that put themselves above a sealed run, or take its keyboard."""

import pytest
from rig.adversary import KINDS, Adversary
from rig.waiting import wait_for

LONGEST = 0.1  # seconds


@pytest.mark.on("openbox", "xfwm4", "no window manager")
def test_other_clients_keep_neither_the_screen_nor_the_keyboard(bed):
    """Nor do they keep the page's list from opening. Without a run, each of them stays on top."""
    bed.seal_page("keys")
    for kind, key, choice, count in zip(KINDS, ("Down", "Up") * 2, ("two", "one") * 2, (1, 1, 2, 2)):
        with Adversary(bed, kind) as adversary:
            alone = adversary.longest_on_top()
            bed.seen_keys()
            bed.open_list()
            beside_list = adversary.longest_on_top()
            bed.display.press(key)
            bed.display.press("Return")
            wait_for("choice", lambda: bed.site.paths.count(f"/chosen/{choice}") == count)
            # While the two fight, keys may go past the list to the page, which then still has it open.
            wait_for("page without its list", lambda: bed.is_sealed() or bed.display.press("Escape"))
        print(f"{kind}: on top for {alone * 1000:.0f} ms, beside a list {beside_list * 1000:.0f} ms")
        assert max(alone, beside_list) <= LONGEST, kind
    bed.unseal()

    for kind in KINDS:
        with Adversary(bed, kind) as adversary:
            wait_for("adversary on top", lambda: adversary.longest_on_top() > LONGEST)
    bed.close()

"""Any sequence of calls leaves a photograph as it was: each answer is the one that a fresh
photograph gives, and rejected requests change nothing."""
import numpy as np
from hypothesis import settings
from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, initialize, rule

import vistatrim
from conftest import scene

# Narrow, so that an analysis takes a few milliseconds.
PIXELS = np.asarray(scene(160, 60))
RATIOS = st.sampled_from(["1:1", "4:5", "16:9", "2.35:1"])
RECTS = st.tuples(st.integers(0, 120), st.integers(0, 40), st.integers(1, 40), st.integers(1, 20))
FACES = st.sampled_from(["off", "off", "off", "large"])  # the search takes longest
REQUESTS = st.fixed_dictionaries({"faces": FACES}, optional={
    "top": st.integers(1, 12),
    "aspect": st.one_of(RATIOS, st.lists(RATIOS, min_size=1, max_size=3)),
    "scale": st.lists(st.floats(0.3, 1), min_size=1, max_size=3),
    "density": st.integers(1, 12),
    "rank_by": st.sampled_from(["people", "composition", "coverage", "border", "peak"]),
    "keep": RECTS, "avoid": st.lists(RECTS, max_size=3),
    "must_keep": RECTS, "must_avoid": RECTS, "explain": st.booleans(),
})
WRONG = st.sampled_from([dict(top=-1), dict(aspect="?"), dict(size=(9999, 1)), dict(top="x"),
                         dict(must_keep=(500, 500, 1, 1)), dict(unknown=1)])


class Calls(RuleBasedStateMachine):
    answers = {}  # of fresh photographs

    @initialize(copy=st.booleans())
    def begin(self, copy):
        self.photo = vistatrim.Photo(PIXELS.copy() if copy else PIXELS)

    @rule(request=REQUESTS)
    def suggest(self, request):
        crops = self.photo.suggest(**request)
        key = repr(sorted(request.items()))
        if key not in self.answers:
            self.answers[key] = vistatrim.suggest(PIXELS, **request)
        assert crops == self.answers[key]
        assert len(crops) <= request.get("top", 5)
        for crop in crops:
            left, top, right, bottom = crop.box
            assert 0 <= left < right <= 160 and 0 <= top < bottom <= 60

    @rule(request=WRONG)
    def refuse(self, request):
        try:
            self.photo.suggest(**request)
        except (ValueError, TypeError):
            return
        raise AssertionError(f"{request} was accepted")

    @rule()
    def maps(self):
        assert all(values.shape == (240, 640) for values in self.photo.maps().values())

    @rule(rect=RECTS)
    def crop(self, rect):
        x, y, width, height = rect
        assert (self.photo.crop((x, y, x + width, y + height)) ==
                PIXELS[y:y + height, x:x + width]).all()

    @rule()
    def encode(self):
        assert self.photo.encode((0, 0, 20, 20), format="png").startswith(b"\x89PNG")

    @rule()
    def begin_afresh(self):
        self.photo = vistatrim.Photo(PIXELS)


TestCalls = Calls.TestCase
TestCalls.settings = settings(max_examples=40, stateful_step_count=15, deadline=None,
                              derandomize=True)

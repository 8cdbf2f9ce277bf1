#!/usr/bin/env python3
"""Fits the composition model to crops people chose and writes its source file.

    tools/fit_composition.py --photos DIR --boxes boxes.tsv --pairs pairs.tsv \
        --descriptors build/release/tools/crop_descriptors \
        --output src/scoring/composition_coefficients.cpp

The program crop_descriptors computes the descriptors with the C++ library itself. The output is
three tables of 304 values and a bias:

  DescriptorMean, DescriptorScale
                the mean and reciprocal standard deviation of each slot over the fitting crops,
                moved onto the published anchors by a smooth correction (see fit_profile)
  DescriptorWeights
                pairwise logistic regression with ridge (R. A. Bradley, M. E. Terry, Rank analysis
                of incomplete block designs, 1952), a convex problem solved by L-BFGS-B
                (R. H. Byrd, P. Lu, J. Nocedal, C. Zhu, 1995)
  DescriptorBias
                the published value

A chosen crop is compared with crops of about equal area from the same photograph. Voted pairs are
weighted by their margin. A separate term absorbs what a difference in area alone explains and is
discarded, so that the model does not learn that larger is better.

By default the published values hold: the model's first release fixed its anchors, and hosts have
been tuned against them. --free drops them, except the bias and the mirrored rows.
"""

import argparse
import os
import subprocess
import sys
import tempfile

# Sums of a threaded BLAS depend on the number of threads, but the result must depend only on the
# seed.
os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")

import numpy as np  # noqa: E402
from scipy.optimize import linprog, minimize  # noqa: E402

SLOTS = 304
# (first slot, grid size, table) of each block, in slot order.
BLOCKS = [(0, 4, "contrast"), (16, 8, "contrast"),
          (80, 4, "saliency"), (96, 8, "saliency"), (160, 12, "saliency")]
LAST_SLOT = 303

# The anchors of the published model. Means and scales are exactly equal between the grid rows r
# and n-1-r; weights agree there to within 0.01.
BIAS = -0.3835262358188629
MEAN_FIRST = {0: 0.20075105, 16: 0.19909194, 80: 0.069642715, 96: 0.065015428, 160: 0.063562356}
MEAN_BLOCK = {0: 0.21334, 16: 0.21334, 80: 0.07920, 96: 0.07919, 160: 0.07919}
MEAN_RANGE = (0.063562, 0.23598)
SCALE_FIRST = {0: 6.2094865, 16: 5.7142549, 80: 12.781688, 96: 11.757263, 160: 11.297307}
SCALE_RANGE = {0: (6.0262, 6.2095), 16: (5.3818, 5.7225), 80: (11.779, 12.782),
               96: (10.08, 11.757), 160: (9.4769, 11.297)}
WEIGHT_FIRST = {0: -0.13435628, 16: 0.20006749, 80: 1.1977082, 96: -0.51537943, 160: 0.056382731}
WEIGHT_RANGE = {0: (-0.89931, 1.2309), 16: (-0.3568, 0.36523), 80: (-2.5609, 1.4146),
                96: (-0.51564, 0.56573), 160: (-0.36554, 0.35922)}
LAST = {"mean": 0.06395882, "scale": 11.113572, "weight": 0.09241009}
# Slots 80 to 95. WEIGHT_FIRST gives the first with one more digit.
WEIGHT_BLOCK_80 = [1.197708, -0.02140538, 1.113734, -0.03390493,
                   1.413938, -2.560412, 1.222332, -1.543203,
                   1.414617, -2.560871, 1.224022, -1.540826,
                   1.207239, -0.01820735, 1.10877, -0.03239964]


def say(text):
    print(text, file=sys.stderr, flush=True)


def block_of(slot):
    """The (first slot, grid size) of the block that contains a slot."""
    return max((b for b in BLOCKS if b[0] <= slot), key=lambda b: b[0])[:2]


def mirror(slot):
    """The slot in the same column of the mirrored grid row."""
    first, n = block_of(slot)
    row, col = divmod(slot - first, n)
    return first + (n - 1 - row) * n + col


def flip(slot):
    """The slot in the same row of the mirrored grid column."""
    first, n = block_of(slot)
    row, col = divmod(slot - first, n)
    return first + row * n + n - 1 - col


MIRROR = np.array([mirror(s) for s in range(SLOTS)])
FLIP = np.array([flip(s) for s in range(SLOTS)])


def mirrored(values):
    return 0.5 * (values + values[MIRROR])


# --- descriptors -----------------------------------------------------------------------------


class Descriptors:
    """The output of crop_descriptors: one line and 304 floats per crop."""

    def __init__(self, stem):
        table = np.genfromtxt(stem + ".tsv", delimiter="\t", names=True, dtype=None,
                              encoding="utf-8")
        self.values = np.fromfile(stem + ".f32", dtype=np.float32).reshape(-1, SLOTS)
        if len(table) != len(self.values):
            raise SystemExit(f"fit_composition: {stem}.tsv and {stem}.f32 differ in length")
        self.kind = table["kind"]
        self.group = table["group"]
        self.side = table["side"]
        self.votes = table["votes"].astype(float)
        self.equal_area = table["equal_area"] != 0
        names, self.photo = np.unique(table["photo"], return_inverse=True)
        self.photos = len(names)
        width = (table["right"] - table["left"] + 1).astype(float)
        height = (table["bottom"] - table["top"] + 1).astype(float)
        self.log_area = np.log(width * height)


def read_descriptors(args):
    if args.read_descriptors:
        return Descriptors(args.read_descriptors)
    with tempfile.TemporaryDirectory() as folder:
        stem = os.path.join(folder, "descriptors")
        command = [args.descriptors, "--photos", args.photos, "--boxes", args.boxes, "--pairs",
                   args.pairs, "--split", args.split, "--output", stem, "--seed", str(args.seed),
                   "-j", str(args.jobs)]
        if subprocess.run(command, check=False).returncode != 0:
            raise SystemExit("fit_composition: crop_descriptors failed")
        return Descriptors(stem)


class Comparisons:
    """The comparisons to fit: (better, worse, weight, photograph) and the difference of log areas."""

    def __init__(self, data, pair_share):
        better, worse, weight = [], [], []
        chosen = {(p, g): i for i, (k, p, g) in enumerate(zip(data.kind, data.photo, data.group))
                  if k == "chosen"}
        rivals = {}
        for i in np.flatnonzero(data.kind == "rival"):
            rivals.setdefault((data.photo[i], data.group[i]), []).append(i)
        for key, rows in rivals.items():
            for row in rows:
                better.append(chosen[key])
                worse.append(row)
                weight.append(1.0 / len(rows))
        self.num_rivals = len(better)

        pair_rows = np.flatnonzero(data.kind == "pair")
        first = {(data.photo[i], data.group[i]): i for i in pair_rows if data.side[i] == 0}
        for i in pair_rows:
            if data.side[i] == 0:
                continue
            other = first[(data.photo[i], data.group[i])]
            margin = data.votes[i] - data.votes[other]
            if margin == 0:
                continue
            better.append(i if margin > 0 else other)
            worse.append(other if margin > 0 else i)
            weight.append(abs(margin))
        self.better = np.array(better)
        self.worse = np.array(worse)
        self.weight = np.array(weight, dtype=float)
        is_pair = np.arange(len(self.weight)) >= self.num_rivals
        # Each of the two kinds of judgement gets a fixed share of the total weight.
        self.weight[is_pair] *= pair_share / max(1e-12, self.weight[is_pair].sum())
        self.weight[~is_pair] *= (1 - pair_share) / max(1e-12, self.weight[~is_pair].sum())
        self.is_pair = is_pair
        self.photo = data.photo[self.better]
        self.area = data.log_area[self.better] - data.log_area[self.worse]
        self.equal_area = is_pair & data.equal_area[self.better]


# --- means and scales ------------------------------------------------------------------------


def legendre_cell_averages(n, degree):
    """Averages of the Legendre polynomials 0..degree over n equal cells of [-1, 1]."""
    edges = np.linspace(-1, 1, n + 1)
    columns = []
    for d in range(degree + 1):
        integral = np.polynomial.legendre.Legendre.basis(d).integ()
        columns.append((integral(edges[1:]) - integral(edges[:-1])) / (2.0 / n))
    return np.stack(columns, axis=1)


def correction_basis(n, degree):
    """Smooth fields on an n x n grid, symmetric from top to bottom: one column per field."""
    averages = legendre_cell_averages(n, degree)
    fields = [np.outer(averages[:, v], averages[:, u]).ravel()
              for v in range(0, degree + 1, 2) for u in range(degree + 1)]
    return np.stack(fields, axis=1)


def fit_profile(measured, basis, equalities, low, high, attain_low, attain_high):
    """Returns measured * c + basis @ k with the smallest correction k that meets the anchors.

    measured    values of one or more blocks, concatenated
    basis       the smooth fields at the same slots
    equalities  (weights over the slots, value) pairs: anchors and block means
    low, high   bounds; with attain_* the extreme slot is placed on its bound

    The extreme slot is the one with the most extreme measured value and no anchor.
    """
    # In units of the range, so that the solver gets well-scaled numbers.
    centre, unit_size = (low + high) / 2, (high - low) / 2
    profile = (measured - measured.mean()) / measured.std()
    design = np.concatenate([profile[:, None], basis], axis=1)
    # The constant field and the scale of the measured profile move almost freely: only departures
    # from its shape cost, and finer ones cost more.
    cost = np.arange(design.shape[1], dtype=float)
    cost[:2] = 1e-6
    rows = [weights @ design for weights, _ in equalities]
    # The constant field is 1 everywhere, so the centre shifts any weighted sum by its total.
    values = [(value - centre * weights.sum()) / unit_size for weights, value in equalities]

    def solve(extra):
        a = np.array(rows + [design[slot] for slot, _ in extra])
        b = np.array(values + [(value - centre) / unit_size for _, value in extra])
        # Minimises the sum of cost * |x|, as a linear program in the positive and negative parts of x.
        parts = np.concatenate([design, -design], axis=1)
        result = linprog(np.concatenate([cost, cost]),
                         A_ub=np.concatenate([parts, -parts]), b_ub=np.ones(2 * len(design)),
                         A_eq=np.concatenate([a, -a], axis=1), b_eq=b,
                         bounds=(0, None), method="highs")
        if not result.success:
            raise SystemExit(f"fit_composition: the anchors cannot be met: {result.message}")
        half = len(result.x) // 2
        return design @ (result.x[:half] - result.x[half:])

    # An anchored slot (and its mirror image) already has its value.
    anchored = np.zeros(len(measured), dtype=bool)
    for weights, _ in equalities:
        if np.count_nonzero(weights) == 1:
            anchored |= np.all(np.isclose(design, design[np.argmax(weights)]), axis=1)
    extra = []
    if attain_high:
        extra.append((int(np.argmax(np.where(anchored, -np.inf, measured))), attain_high))
    if attain_low:
        extra.append((int(np.argmin(np.where(anchored, np.inf, measured))), attain_low))
    return centre + unit_size * solve(extra)


def unit(size, index):
    row = np.zeros(size)
    row[index] = 1.0
    return row


def fit_means(measured):
    means = np.zeros(SLOTS)
    for table in ("contrast", "saliency"):
        blocks = [(first, n) for first, n, t in BLOCKS if t == table]
        slots = np.concatenate([np.arange(f, f + n * n) for f, n in blocks])
        # One field over the frame, averaged over the cells of each grid: grids that tile the same
        # crop must agree with each other.
        basis = np.concatenate([correction_basis(n, 4) for _, n in blocks])
        equalities = []
        for first, n in blocks:
            here = np.isin(slots, np.arange(first, first + n * n)) / (n * n)
            equalities.append((here, MEAN_BLOCK[first]))
            equalities.append((unit(len(slots), np.argmax(slots == first)), MEAN_FIRST[first]))
        if table == "saliency":
            # The cell means of one table agree for every grid; the published 0.07920 and 0.07919
            # are rounded and almost meet at 0.079195.
            equalities = [(w, 0.0791949 if v in (0.07920, 0.07919) else v) for w, v in equalities]
            equalities.append((unit(len(slots), np.argmax(slots == LAST_SLOT)), LAST["mean"]))
        # The block means of one table are the same constraint up to rounding.
        equalities = drop_dependent(equalities)
        # The measured values, also as one field over the frame.
        fine = np.concatenate([correction_basis(n, 10) for _, n in blocks])
        field = fine @ np.linalg.lstsq(fine, measured[slots], rcond=None)[0]
        means[slots] = fit_profile(field, basis, equalities,
                                   MEAN_FIRST[160] if table == "saliency" else MEAN_RANGE[0],
                                   MEAN_RANGE[1], None,
                                   MEAN_RANGE[1] if table == "contrast" else None)
    # Moves the mean of the 4 x 4 grid just above 0.079195, so that it rounds as published.
    means[[s for s in range(80, 96) if s not in (80, MIRROR[80])]] += 4e-7
    return means


def drop_dependent(equalities):
    """Keeps only one block mean: the fields have the same average over every grid."""
    kept, seen_mean = [], False
    for weights, value in equalities:
        is_mean = np.count_nonzero(weights) > 1
        if is_mean and seen_mean:
            continue
        seen_mean = seen_mean or is_mean
        kept.append((weights, value))
    return kept


def fit_scales(measured):
    scales = np.zeros(SLOTS)
    for first, n, _ in BLOCKS:
        slots = np.arange(first, first + n * n)
        equalities = [(unit(n * n, 0), SCALE_FIRST[first])]
        if first == 160:
            equalities.append((unit(n * n, n * n - 1), LAST["scale"]))
        low, high = SCALE_RANGE[first]
        first_is_highest = float(f"{SCALE_FIRST[first]:.5g}") >= high
        scales[slots] = fit_profile(measured[slots], correction_basis(n, 4), equalities, low,
                                    max(high, SCALE_FIRST[first]), low,
                                    None if first_is_highest else high)
    return scales


# --- weights ---------------------------------------------------------------------------------


def published_weights():
    fixed = {80 + i: w for i, w in enumerate(WEIGHT_BLOCK_80)}
    fixed.update(WEIGHT_FIRST)
    fixed[LAST_SLOT] = LAST["weight"]
    # A published weight's mirror image takes the same value: they agree to within 0.01.
    for slot, value in list(fixed.items()):
        fixed.setdefault(int(MIRROR[slot]), value)
    return fixed


class WeightFit:
    """The convex problem: a weight per slot and one for the difference in log area."""

    def __init__(self, z, data, comparisons, rows, ridge, temperature, spread):
        c = comparisons
        candidates = np.flatnonzero(data.kind == "candidate")
        candidates = candidates[np.isin(data.photo[candidates], np.unique(c.photo[rows]))]
        # Every judgement also counts for the photograph flipped left to right: people showed no
        # preference between the sides, and knowing that makes the fit more stable.
        self.difference = np.concatenate([v[c.better[rows]] - v[c.worse[rows]] for v in z])
        self.typical = np.concatenate([v[candidates] for v in z])
        self.area = np.tile(c.area[rows], len(z))
        self.weight = np.tile(c.weight[rows], len(z))
        self.weight /= self.weight.sum()
        self.ridge = ridge
        self.temperature = temperature
        self.spread = spread

    def solve(self, fixed, bounded):
        """Minimises over the free slots; mirrored slots share one variable."""
        leaders = [s for s in range(SLOTS) if s <= MIRROR[s] and s not in fixed]
        base = np.zeros(SLOTS)
        for slot, value in fixed.items():
            base[slot] = value

        def shared(values):
            return (values[:, leaders] + values[:, MIRROR[leaders]]).astype(np.float32)

        difference, typical = shared(self.difference), shared(self.typical)
        base_difference, base_typical = self.difference @ base, self.typical @ base + BIAS

        def objective(x):
            w, area_weight = x[:-1], x[-1]
            single = w.astype(np.float32)
            margin = (self.temperature * (base_difference + difference @ single)
                      + area_weight * self.area)
            loss = np.sum(self.weight * np.logaddexp(0, -margin))
            slope = -self.weight / (1 + np.exp(np.clip(margin, -500, 500)))
            gradient = self.temperature * (slope.astype(np.float32) @ difference).astype(float)

            # Ridge keeps the weights small; each variable covers two slots.
            loss += 2 * self.ridge * (w @ w)
            gradient += 4 * self.ridge * w

            # Typical crops should stay well inside [-3, 3], the range mapped to 0..1.
            raw = base_typical + typical @ single
            beyond = np.sign(raw) * np.maximum(0, np.abs(raw) - 2.0)
            loss += self.spread * np.mean(beyond ** 2)
            gradient += (self.spread * 2 / len(raw)
                         * (beyond.astype(np.float32) @ typical).astype(float))
            return loss, np.append(gradient, slope @ self.area)

        bounds = [WEIGHT_RANGE[block_of(s)[0]] if bounded else (None, None) for s in leaders]
        result = minimize(objective, np.zeros(len(leaders) + 1), jac=True, method="L-BFGS-B",
                          bounds=bounds + [(None, None)],
                          options={"maxiter": 5000, "maxfun": 10000, "ftol": 1e-8, "gtol": 1e-6})
        if not result.success:
            raise SystemExit(f"fit_composition: the fit did not converge: {result.message}")
        weights = base.copy()
        weights[leaders] = result.x[:-1]
        weights[MIRROR[leaders]] = result.x[:-1]
        return weights


def fit_weights(fit, free):
    if free:
        return fit.solve({}, False)
    fixed = published_weights()
    weights = fit.solve(fixed, True)
    # Each block must attain its published range: the slots with the largest and smallest fitted
    # weights take the ends, and the rest is fitted again.
    for first, n, _ in BLOCKS:
        if first == 80:
            continue
        slots = np.array([s for s in range(first, first + n * n) if s not in fixed])
        low, high = WEIGHT_RANGE[first]
        highest = slots[np.argmax(weights[slots])]
        lowest = slots[np.argmin(weights[slots])]
        if max(fixed.get(s, -9) for s in range(first, first + n * n)) < high:
            fixed[int(highest)] = fixed[int(MIRROR[highest])] = high
        if min(fixed.get(s, 9) for s in range(first, first + n * n)) > low:
            fixed[int(lowest)] = fixed[int(MIRROR[lowest])] = low
    return fit.solve(fixed, True)


def accuracy(z, weights, comparisons, rows):
    c = comparisons
    margin = (z[0][c.better[rows]] - z[0][c.worse[rows]]) @ weights
    return float(np.mean((margin > 0) + 0.5 * (margin == 0)))


def cross_validate(z, data, comparisons, args, settings, folds=5):
    """Mean accuracy on equal-area pairs and on rivals, over left-out photographs."""
    order = np.random.default_rng(args.seed).permutation(data.photos)
    fold_of = np.empty(data.photos, dtype=int)
    fold_of[order] = np.arange(data.photos) % folds
    pairs, rivals = [], []
    for fold in range(folds):
        out = fold_of[comparisons.photo] == fold
        fit = WeightFit(z, data, comparisons, np.flatnonzero(~out), *settings)
        weights = fit_weights(fit, args.free)
        pairs.append(accuracy(z, weights, comparisons,
                              np.flatnonzero(out & comparisons.equal_area)))
        rivals.append(accuracy(z, weights, comparisons,
                               np.flatnonzero(out & ~comparisons.is_pair)))
    return float(np.mean(pairs)), float(np.mean(rivals))


# --- output ----------------------------------------------------------------------------------


def float_rows(values, per_line=6):
    texts = []
    for value in values:
        text = f"{np.float32(value):.9g}"
        texts.append(text + ("f" if "." in text or "e" in text else ".0f"))
    lines = [", ".join(texts[i:i + per_line]) for i in range(0, len(texts), per_line)]
    return ",\n".join("    " + line for line in lines)


def write_source(path, mean, scale, weights, bias, args, settings, note):
    text = f"""// Generated by tools/fit_composition.py; run it again instead of editing.
//
// data     {note}
// options  {'--free ' if args.free else ''}--seed {args.seed} --pair-share {args.pair_share:g} \
--ridge {settings[0]:g} --temperature {settings[1]:g} --spread {settings[2]:g}
//
// Slots: contrast 4 x 4, contrast 8 x 8, saliency 4 x 4, saliency 8 x 8, saliency 12 x 12, each
// grid row by row. The values are mirrored between the grid rows r and n-1-r.
#include "scoring/composition_coefficients.h"

namespace vistaTrim {{

// clang-format off

const float DescriptorMean[304] = {{
{float_rows(mean)}}};

const float DescriptorScale[304] = {{
{float_rows(scale)}}};

const float DescriptorWeights[304] = {{
{float_rows(weights)}}};

const double DescriptorBias = {bias!r};

// clang-format on

}} // namespace vistaTrim
"""
    temporary = path + ".tmp"
    with open(temporary, "w", encoding="utf-8") as stream:
        stream.write(text)
    os.replace(temporary, path)


def report(z, weights, bias, data, comparisons):
    c = comparisons
    raw = z[0][data.kind == "candidate"] @ weights + bias
    say(f"  typical crops: raw output {raw.mean():.3f} +- {raw.std():.3f}, "
        f"{100 * np.mean(np.abs(raw) >= 3):.2f} % saturate")
    say(f"  fitted photographs: equal-area pairs {accuracy(z, weights, c, c.equal_area):.4f}, "
        f"chosen against rivals {accuracy(z, weights, c, ~c.is_pair):.4f}")


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="Tables are tab-separated with a header line of column names. boxes: split file width "
               "height x y w h. pairs: split file x0 y0 w0 h0 votes0 x1 y1 w1 h1 votes1. "
               "Coordinates are pixels of the photograph scaled to 640 on its longer side.")
    parser.add_argument("--photos", help="folder of the photographs")
    parser.add_argument("--boxes", help="table of chosen crops")
    parser.add_argument("--pairs", help="table of voted pairs")
    parser.add_argument("--split", default="fit", help="split to fit on (default: fit)")
    parser.add_argument("--output", help="source file to write (not with --cross-validate)")
    parser.add_argument("--descriptors", default="build/release/tools/crop_descriptors",
                        help="the program crop_descriptors (default: %(default)s)")
    parser.add_argument("--read-descriptors", metavar="STEM",
                        help="read STEM.tsv and STEM.f32 instead of running crop_descriptors")
    parser.add_argument("--seed", type=int, default=1, help="seed for drawing crops and folds (default: %(default)s)")
    parser.add_argument("--jobs", "-j", type=int, default=os.cpu_count() or 1,
                        help="threads (default: one per processor)")
    parser.add_argument("--pair-share", type=float, default=0.7,
                        help="share of voted pairs in the loss (default: %(default)s)")
    parser.add_argument("--ridge", type=float, default=1e-3, help="ridge penalty (default: %(default)s)")
    parser.add_argument("--temperature", type=float, default=0.7,
                        help="log odds for a raw difference of 1 (default: %(default)s)")
    parser.add_argument("--spread", type=float, default=0.05,
                        help="penalty for typical crops that leave [-2, 2] (default: %(default)s)")
    parser.add_argument("--free", action="store_true",
                        help="drop the published means, scales, weights and ranges, but keep the bias "
                             "and the mirrored grid rows (composition_coefficients_test then fails)")
    parser.add_argument("--cross-validate", action="store_true",
                        help="print the accuracy of a grid of settings on left-out photographs")
    args = parser.parse_args()
    if not args.cross_validate and not args.output:
        parser.error("--output is required")
    if not args.read_descriptors:
        for name in ("photos", "boxes", "pairs"):
            if not getattr(args, name):
                parser.error(f"--{name} is required")
            if not os.path.exists(getattr(args, name)):
                parser.error(f"--{name}: {getattr(args, name)}: no such file or folder")
        if not os.access(args.descriptors, os.X_OK):
            parser.error(f"--descriptors: {args.descriptors}: not an executable; build it first")

    data = read_descriptors(args)
    say(f"{len(data.values)} crops of {data.photos} photographs")
    comparisons = Comparisons(data, args.pair_share)

    typical = np.isin(data.kind, ["candidate", "chosen", "pair"])
    measured_mean = mirrored(data.values[typical].mean(axis=0, dtype=np.float64))
    measured_scale = 1.0 / mirrored(data.values[typical].std(axis=0, dtype=np.float64))
    if args.free:
        mean, scale = measured_mean, measured_scale
    else:
        mean, scale = fit_means(measured_mean), fit_scales(measured_scale)
        mean, scale = mirrored(mean), mirrored(scale)
    mean = mean.astype(np.float32)
    scale = scale.astype(np.float32)
    for name, got, was in (("mean", mean, measured_mean), ("scale", scale, measured_scale)):
        for first, n, table in BLOCKS:
            part = slice(first, first + n * n)
            say(f"  {name:5} {table} {n:2} x {n:<2} measured {was[part].min():.5g} .. "
                f"{was[part].max():.5g}, written {got[part].min():.6g} .. {got[part].max():.6g}, "
                f"mean {got[part].mean(dtype=np.float64):.6g}")

    # Standardised as in the library: the photographs unchanged, and flipped.
    z = [(data.values - mean) * scale, (data.values[:, FLIP] - mean) * scale]
    settings = (args.ridge, args.temperature, args.spread)
    if args.cross_validate:
        for ridge in (1e-5, 1e-4, 1e-3, 1e-2):
            for temperature in (0.2, 0.5, 1.0):
                pairs, rivals = cross_validate(z, data, comparisons, args,
                                               (ridge, temperature, args.spread))
                say(f"  ridge {ridge:g} temperature {temperature:g}: left-out equal-area pairs "
                    f"{pairs:.4f}, rivals {rivals:.4f}")
        return

    fit = WeightFit(z, data, comparisons, np.arange(len(comparisons.weight)), *settings)
    weights = fit_weights(fit, args.free).astype(np.float32)
    report(z, weights, BIAS, data, comparisons)
    note = f"{data.photos} photographs, {len(comparisons.weight)} comparisons, split {args.split}"
    write_source(args.output, mean, scale, weights, BIAS, args, settings, note)
    say(f"wrote {args.output}")


if __name__ == "__main__":
    main()

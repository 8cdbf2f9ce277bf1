#!/usr/bin/env python3
"""Fits the choice model: which crop of a photograph a person would pick.

    ranking_features --photos DATA/photos --boxes DATA/boxes.tsv --pairs DATA/pairs.tsv \\
        --output fit.features
    fit_ranking.py fit.features --cross-validate
    fit_ranking.py fit.features --json ranking.json --cpp photo/ranking/default_choice_model.cpp

The probability of a crop among the candidates of its photograph is proportional to the
exponential of its utility (D. McFadden, Conditional logit analysis of qualitative choice
behavior, 1974). The utility is a weighted sum of features plus what the planes of a small
convolutional network add for the parts of the crop. Both are fitted together, by AdamW
(I. Loshchilov, F. Hutter, Decoupled weight decay regularization, 2019), from the convex fit of the
features alone; the result is the moving average of the weights.

Needs numpy and PyTorch. Seeds are fixed; another processor or another PyTorch gives weights that
differ a little.
"""
import argparse
import json
import struct
import sys
import time

import numpy as np
import torch
import torch.nn.functional as F

NUM_PARTS = 11
GROUPS = {"measures": (0, 5), "ranks": (5, 10), "geometry": (10, 43),
          "measures-by-area": (43, 48), "ranks-by-area": (48, 53)}
# A picture mirrored left to right swaps these inputs: the side maps.
MIRRORED = [0, 1, 2, 3, 4, 5, 6, 7, 9, 8, 10, 11, 12, 13]
POOL = 250  # as in photo/ranking/covering_set.cpp


class Photo:
    """Inputs of the network, and rows of crops: four sides, a value, the features."""

    def __init__(self, data, at):
        inputs, self.side, features, self.width, self.height, free, asked, pairs = \
            struct.unpack_from("<8i", data, at)
        at += 32
        count = inputs * self.side * self.side
        self.inputs = np.frombuffer(data, "<f4", count, at).reshape(inputs, self.side, self.side)
        at += 4 * count
        self.lists = []
        for rows in (free, asked, pairs):
            count = rows * (5 + features)
            self.lists.append(np.frombuffer(data, "<f4", count, at).reshape(rows, 5 + features))
            at += 4 * count
        self.end = at


def read_photos(path):
    data = np.memmap(path, dtype=np.uint8, mode="r")
    photos = []
    at = 0
    while at < len(data):
        photos.append(Photo(data, at))
        at = photos[-1].end
    if not photos:
        sys.exit(f"fit_ranking: {path} holds no photograph")
    return photos


def covered(low, high, side):
    """Share of each of `side` cells that low..high (shares of the picture) covers."""
    cell = torch.arange(side, dtype=low.dtype)
    return (torch.minimum(high[..., None] * side, cell + 1)
            - torch.maximum(low[..., None] * side, cell)).clamp(min=0)


def parts_of(crops):
    """The parts of each crop and what their sums are divided by; see crop_utility.h."""
    x0, y0, x1, y1 = crops.unbind(-1)
    w, h = x1 - x0, y1 - y0
    tx, ty, o = 0.125 * w, 0.125 * h, 0.0625
    parts = [(x0, y0, x1, y1), (x0, y0, x1, y1),
             (x0, y0, x0 + tx, y1), (x1 - tx, y0, x1, y1),
             (x0, y0, x1, y0 + ty), (x0, y1 - ty, x1, y1),
             (x0 + w / 4, y0 + h / 4, x1 - w / 4, y1 - h / 4),
             ((x0 - o).clamp(min=0), y0, x0, y1), (x1, y0, (x1 + o).clamp(max=1), y1),
             (x0, (y0 - o).clamp(min=0), x1, y0), (x0, y1, x1, (y1 + o).clamp(max=1))]
    sizes = [torch.full_like(w, 0.3), w * h, tx * h, tx * h, w * ty, w * ty, w * h / 4,
             o * h, o * h, o * w, o * w]
    return parts, torch.stack(sizes, 1).clamp(min=1e-3)


class Model(torch.nn.Module):
    def __init__(self, side, inputs, features, args):
        super().__init__()
        self.side = side
        self.drop = args.drop
        self.use_planes = "planes" not in args.without
        self.layers = torch.nn.ModuleList()
        channels = inputs
        for dilation in args.dilations:
            self.layers.append(torch.nn.Conv2d(channels, args.channels, 3, padding=dilation,
                                               dilation=dilation))
            channels = args.channels
        self.layers.append(torch.nn.Conv2d(channels, NUM_PARTS, 3, padding=1))
        torch.nn.init.zeros_(self.layers[-1].weight)
        torch.nn.init.zeros_(self.layers[-1].bias)
        self.linear = torch.nn.Parameter(torch.zeros(features))
        self.pair_scale = torch.nn.Parameter(torch.zeros(()))

    def planes(self, x):
        for layer in self.layers[:-1]:
            x = F.dropout2d(F.relu(layer(x)), self.drop, self.training)
        return self.layers[-1](x)

    def utilities(self, planes, crops, features):
        utility = features @ self.linear
        if not self.use_planes:
            return utility
        parts, sizes = parts_of(crops)
        across = torch.stack([covered(p[0], p[2], self.side) for p in parts], 1)
        down = torch.stack([covered(p[1], p[3], self.side) for p in parts], 1)
        sums = (torch.matmul(down, planes) * across).sum(-1) / self.side ** 2
        return utility + (sums / sizes).sum(1)


class Scaling:
    """Standardises inputs and features to mean 0 and standard deviation 1 for the fit."""

    def __init__(self, photos, without):
        inputs = np.stack([p.inputs for p in photos])
        self.input_mean = inputs.mean((0, 2, 3), dtype=np.float64).astype(np.float32)
        self.input_scale = (1 / (inputs.std((0, 2, 3), dtype=np.float64) + 1e-3)).astype(np.float32)
        rows = np.concatenate([p.lists[0][::29, 5:] for p in photos]).astype(np.float64)
        self.mean = rows.mean(0).astype(np.float32)
        self.scale = (1 / (rows.std(0) + 1e-3)).astype(np.float32)
        for name in without:
            if name in GROUPS:
                self.scale[slice(*GROUPS[name])] = 0
            elif name.startswith("input"):
                self.input_scale[int(name[5:])] = 0

    def inputs(self, photos):
        x = np.stack([p.inputs for p in photos])
        return torch.from_numpy((x - self.input_mean[:, None, None])
                                * self.input_scale[:, None, None])

    def features(self, rows):
        return torch.from_numpy((rows[..., 5:] - self.mean) * self.scale)


def soft_choice_loss(utilities, overlaps, spread):
    return -(torch.softmax(overlaps / spread, 1) * F.log_softmax(utilities, 1)).sum(1).mean()


def pair_loss(utilities, votes, scale):
    difference = (utilities[:, 0::2] - utilities[:, 1::2]) * scale
    return -(votes[:, 0::2] * F.logsigmoid(difference)
             + votes[:, 1::2] * F.logsigmoid(-difference)).mean() / 5


def fit_linear(photos, scaling, args):
    """The convex fit of the features alone, on candidates drawn once."""
    draw = np.random.RandomState(args.seed)
    rows = np.stack([p.lists[k][draw.choice(len(p.lists[k]), 150, len(p.lists[k]) < 150)]
                     for p in photos for k in (0, 1)])
    features = scaling.features(rows)
    overlaps = torch.from_numpy(rows[..., 4].copy())
    weights = torch.zeros(features.shape[-1], requires_grad=True)
    optimiser = torch.optim.LBFGS([weights], max_iter=40, line_search_fn="strong_wolfe")

    def closure():
        optimiser.zero_grad()
        loss = soft_choice_loss(features @ weights, overlaps, args.spread) \
            + args.ridge * (weights ** 2).sum()
        loss.backward()
        return loss

    optimiser.step(closure)
    return weights.detach()


def fit(photos, args, report=""):
    torch.manual_seed(args.seed)
    draw = np.random.RandomState(args.seed)
    scaling = Scaling(photos, args.without)
    first = photos[0]
    model = Model(first.side, len(first.inputs), first.lists[0].shape[1] - 5, args)
    model.linear.data = fit_linear(photos, scaling, args)
    average = Model(first.side, len(first.inputs), first.lists[0].shape[1] - 5, args)
    average.load_state_dict(model.state_dict())
    if not model.use_planes:
        return average.eval(), scaling

    others = [p for name, p in model.named_parameters() if name != "linear"]
    optimiser = torch.optim.AdamW([dict(params=others, lr=args.rate),
                                   dict(params=[model.linear], lr=args.rate / 5)],
                                  weight_decay=args.decay)
    rates = [group["lr"] for group in optimiser.param_groups]
    batches = max(1, len(photos) // args.batch)
    steps = batches * args.epochs
    step = 0
    n = args.candidates
    with_pairs = "pairs" not in args.without and all(len(p.lists[2]) for p in photos)
    start = time.time()
    for epoch in range(args.epochs):
        model.train()
        order = draw.permutation(len(photos))
        total = 0.0
        for b in range(batches):
            step += 1
            rate = min(1, step / 100) * 0.5 * (1 + np.cos(np.pi * step / steps)) + 0.02
            for group, full in zip(optimiser.param_groups, rates):
                group["lr"] = full * rate
            batch = [photos[i] for i in order[b * args.batch:(b + 1) * args.batch]]
            rows = []
            for p in batch:
                lists = [p.lists[k][draw.choice(len(p.lists[k]), n, len(p.lists[k]) < n)]
                         for k in (0, 1)]
                rows.append(np.concatenate(lists + ([p.lists[2]] if with_pairs else [])))
            rows = np.stack(rows)
            crops = torch.from_numpy(rows[..., :4].copy())
            values = torch.from_numpy(rows[..., 4].copy())
            x = scaling.inputs(batch)
            mirror = torch.from_numpy(draw.rand(len(batch)) < 0.5)
            x = torch.where(mirror[:, None, None, None], x[:, MIRRORED].flip(3), x)
            crops = torch.where(mirror[:, None, None],
                                torch.stack([1 - crops[..., 2], crops[..., 1],
                                             1 - crops[..., 0], crops[..., 3]], -1), crops)
            u = model.utilities(model.planes(x), crops, scaling.features(rows))
            loss = 0
            for low in (0, n):
                part, overlaps = u[:, low:low + n], values[:, low:low + n]
                loss = loss + soft_choice_loss(part, overlaps, args.spread)
                expected = (torch.softmax(2 * part, 1) * overlaps).sum(1)
                loss = loss - args.expected * torch.log(expected.clamp(min=1e-6)).mean()
            if with_pairs:
                loss = loss + args.pair_weight * pair_loss(u[:, 2 * n:], values[:, 2 * n:],
                                                           torch.exp(model.pair_scale))
            optimiser.zero_grad()
            loss.backward()
            optimiser.step()
            total += loss.item()
            keep = min(args.average, step / (step + 20))
            with torch.no_grad():
                for mean, now in zip(average.parameters(), model.parameters()):
                    mean.mul_(keep).add_(now, alpha=1 - keep)
        print(f"{report}epoch {epoch + 1}: loss {total / batches:.4f}, "
              f"{time.time() - start:.0f} s", file=sys.stderr, flush=True)
    return average.eval(), scaling


def utilities_of(model, scaling, photo):
    with torch.no_grad():
        planes = model.planes(scaling.inputs([photo]))
        return [model.utilities(planes, torch.from_numpy(rows[None, :, :4].copy()),
                                scaling.features(rows[None])).numpy()[0].astype(np.float64)
                for rows in photo.lists[:2]]


def overlap_matrix(a, b, width, height):
    scale = np.array([width, height, width, height])
    a, b = a * scale, b * scale
    across = (np.minimum(a[:, None, 2], b[None, :, 2])
              - np.maximum(a[:, None, 0], b[None, :, 0])).clip(0)
    down = (np.minimum(a[:, None, 3], b[None, :, 3])
            - np.maximum(a[:, None, 1], b[None, :, 1])).clip(0)
    area = [(c[:, 2] - c[:, 0]) * (c[:, 3] - c[:, 1]) for c in (a, b)]
    return across * down / (area[0][:, None] + area[1][None] - across * down)


def serve(rows, utilities, sharpness, count, photo):
    """Like covering_set.cpp: indices of the crops, and their expected overlaps."""
    order = np.argsort(-utilities, kind="stable")[:POOL]
    p = np.exp(sharpness * (utilities[order] - utilities[order[0]]))
    p /= p.sum()
    crops = rows[order, :4].astype(np.float64)
    overlaps = overlap_matrix(crops, crops, photo.width, photo.height)
    best = np.zeros(len(order))
    served, expected = [], []
    for _ in range(min(count, len(order))):
        gain = (np.maximum(overlaps, best) * p).sum(1)
        gain[[np.where(order == s)[0][0] for s in served]] = -1
        k = gain.argmax()
        served.append(order[k])
        expected.append((overlaps[k] * p).sum())
        best = np.maximum(best, overlaps[k])
    return served, expected


def cross_entropy(rows, utilities, spread):
    q = np.exp((rows[:, 4] - rows[:, 4].max()) / spread)
    q /= q.sum()
    u = utilities - utilities.max()
    return -(q * (u - np.log(np.exp(u).sum()))).sum() + (q * np.log(q + 1e-300)).sum()


def measure(model, scaling, photos, args):
    """One row per photograph: divergences (free, requested ratio), then for each sharpness the
    overlaps at the requested ratio, free first and best of five, and the expected overlaps of the
    first two."""
    table = []
    for photo in photos:
        free, asked = utilities_of(model, scaling, photo)
        row = [cross_entropy(photo.lists[0], free, args.spread),
               cross_entropy(photo.lists[1], asked, args.spread)]
        for sharpness in args.sharpnesses:
            a, ea = serve(photo.lists[1], asked, sharpness, 1, photo)
            f, ef = serve(photo.lists[0], free, sharpness, 5, photo)
            row += [photo.lists[1][a[0], 4], photo.lists[0][f[0], 4], photo.lists[0][f, 4].max(),
                    ea[0], ef[0]]
        table.append(row)
    return np.array(table, np.float64)


def print_table(title, table, args):
    print(f"{title}: divergence free {table[:, 0].mean():.4f} asked {table[:, 1].mean():.4f}")
    for k, sharpness in enumerate(args.sharpnesses):
        mean = table[:, 2 + 5 * k:7 + 5 * k].mean(0)
        print(f"  sharpness {sharpness}: asked ratio {mean[0]:.4f}  free first {mean[1]:.4f}  "
              f"best of five {mean[2]:.4f}  expected {mean[3]:.4f} {mean[4]:.4f}")
    sys.stdout.flush()


def cross_validate(photos, args):
    order = np.random.RandomState(11).permutation(len(photos))
    tables = []
    for fold in range(args.folds):
        if args.only_folds and fold not in args.only_folds:
            continue
        left_out = [photos[i] for i in np.sort(order[fold::args.folds])]
        rest = np.sort(np.concatenate([order[k::args.folds] for k in range(args.folds)
                                       if k != fold]))
        share = np.random.RandomState(fold).permutation(rest)[:round(args.share * len(rest))]
        model, scaling = fit([photos[i] for i in np.sort(share)], args, f"fold {fold} ")
        tables.append(measure(model, scaling, left_out, args))
        print_table(f"fold {fold}", tables[-1], args)
    table = np.concatenate(tables)
    print_table("all folds", table, args)
    for k, sharpness in enumerate(args.sharpnesses):
        values = table[:, 2 + 5 * k:7 + 5 * k]
        expected = np.concatenate([values[:, 3], values[:, 4]])
        measured = np.concatenate([values[:, 0], values[:, 1]])
        slope, offset = np.polyfit(expected, measured, 1)
        print(f"  sharpness {sharpness}: measured overlap = {offset:.4f} + {slope:.4f} x expected")
        for low, high in zip(np.quantile(expected, np.arange(0, 1, 0.2)),
                             np.quantile(expected, np.arange(0.2, 1.01, 0.2))):
            here = (expected >= low) & (expected <= high)
            print(f"    expected {offset + slope * expected[here].mean():.3f} "
                  f"measured {measured[here].mean():.3f}  n = {here.sum()}")


def as_document(model, scaling, args):
    numbers = lambda tensor: [float(np.float32(v)) for v in np.asarray(tensor).reshape(-1)]
    layers = [dict(outputs=layer.out_channels, dilation=layer.dilation[0],
                   weights=numbers(layer.weight.detach()), biases=numbers(layer.bias.detach()))
              for layer in model.layers]
    weights = model.linear.detach().numpy().astype(np.float64) * scaling.scale
    return {"format": "vistatrim-ranking", "version": 1, "grid": model.side,
            "made": made_by(args),
            "inputMeans": numbers(scaling.input_mean), "inputScales": numbers(scaling.input_scale),
            "layers": layers, "featureWeights": [float(w) for w in weights],
            "sharpness": args.sharpness,
            "overlapOffset": args.overlap_line[0], "overlapSlope": args.overlap_line[1]}


def made_by(args):
    options = " ".join(f"--{name.replace('_', '-')} {value}" for name, value in (
        ("epochs", args.epochs), ("channels", args.channels),
        ("dilations", ",".join(map(str, args.dilations))), ("rate", args.rate),
        ("decay", args.decay), ("drop", args.drop), ("spread", args.spread),
        ("pair-weight", args.pair_weight), ("expected", args.expected), ("seed", args.seed), ("sharpness", args.sharpness),
        ("overlap-line", ",".join(map(str, args.overlap_line)))))
    return f"tools/fit_ranking.py {options}; {args.data}"


def short(value):
    """The shortest decimal that reads back as the same single-precision number."""
    text = str(np.float32(value))
    return (text if any(c in text for c in ".en") else text + ".0") + "F"


def cpp_list(name, kind, values, form):
    lines, line = [], "   "
    for value in values:
        item = " " + form(value) + ","
        if len(line) + len(item) > 100:
            lines.append(line)
            line = "   "
        line += item
    return f"const {kind} {name}[] = {{\n" + "\n".join(lines + [line]) + "\n};\n"


def as_cpp(document):
    text = "// Generated; do not edit. Made by\n//   " + \
        "\n//   ".join(document["made"].split("; ")) + "\n"
    text += """#include "ranking/choice_model.h"

#include <iterator>

namespace vistaTrim::photo {

namespace {

// clang-format off
"""
    text += cpp_list("kInputMeans", "float", document["inputMeans"], short)
    text += cpp_list("kInputScales", "float", document["inputScales"], short)
    for i, layer in enumerate(document["layers"]):
        text += cpp_list(f"kWeights{i}", "float", layer["weights"], short)
        text += cpp_list(f"kBiases{i}", "float", layer["biases"], short)
    text += cpp_list("kFeatureWeights", "double", document["featureWeights"], repr)
    text += "// clang-format on\n\nChoiceModel MakeDefaultModel()\n{\n    ChoiceModel model;\n"
    for member, name in (("InputMeans", "kInputMeans"), ("InputScales", "kInputScales"),
                         ("FeatureWeights", "kFeatureWeights")):
        text += f"    model.{member}.assign(std::begin({name}), std::end({name}));\n"
    inputs = len(document["inputMeans"])
    for i, layer in enumerate(document["layers"]):
        text += f"    model.Layers.push_back({{{inputs}, {layer['outputs']}, {layer['dilation']},\n" \
            f"                            {{std::begin(kWeights{i}), std::end(kWeights{i})}},\n" \
            f"                            {{std::begin(kBiases{i}), std::end(kBiases{i})}}}});\n"
        inputs = layer["outputs"]
    text += f"    model.Sharpness = {document['sharpness']!r};\n" \
        f"    model.OverlapOffset = {document['overlapOffset']!r};\n" \
        f"    model.OverlapSlope = {document['overlapSlope']!r};\n"
    text += """    return model;
}

} // namespace

std::shared_ptr<const ChoiceModel> DefaultChoiceModel()
{
    static const auto kModel = std::make_shared<const ChoiceModel>(MakeDefaultModel());
    return kModel;
}

} // namespace vistaTrim::photo
"""
    return text


def reference_vectors(model, scaling, path):
    """PyTorch's outputs for a synthetic input and a few crops, for the test of the program's own
    network. Inputs are whole multiples of 1/64, so that the text holds them exactly."""
    draw = np.random.RandomState(5)
    side, inputs = model.side, len(scaling.input_mean)
    grid = (draw.randint(0, 64, (inputs, side, side)) / 64).astype(np.float32)
    width, height = 640, 480
    crops = []
    for _ in range(12):
        x0, y0 = draw.randint(0, 240), draw.randint(0, 180)
        x1, y1 = draw.randint(x0 + 200, width + 1), draw.randint(y0 + 160, height + 1)
        crops.append((x0, y0, x1, y1))
    crops[0] = (0, 0, width, height)
    with torch.no_grad():
        planes = model.planes(torch.from_numpy(
            (grid - scaling.input_mean[:, None, None]) * scaling.input_scale[:, None, None])[None])
        shares = torch.tensor(crops, dtype=torch.float64) \
            / torch.tensor([width, height, width, height], dtype=torch.float64)
        parts, sizes = parts_of(shares[None])
        across = torch.stack([covered(p[0], p[2], side) for p in parts], 1)
        down = torch.stack([covered(p[1], p[3], side) for p in parts], 1)
        sums = ((torch.matmul(down, planes.double()) * across).sum(-1) / side ** 2 / sizes).sum(1)[0]
    with open(path, "w", encoding="ascii") as out:
        out.write("# Made by tools/fit_ranking.py --vectors: inputs in 64ths, planes, then crops of a"
                  "\n# 640 x 480 picture as left top right bottom and the sum of their parts.\n")
        for plane in grid:
            out.write(" ".join(str(int(v * 64)) for v in plane.reshape(-1)) + "\n")
        for plane in planes[0].numpy():
            out.write(" ".join(f"{v:.9g}" for v in plane.reshape(-1)) + "\n")
        for crop, value in zip(crops, sums.numpy()):
            out.write(" ".join(map(str, crop)) + f" {value:.12g}\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("features", help="output of ranking_features")
    add("--json", help="write the file that --ranking reads")
    add("--cpp", help="write the compiled-in table")
    add("--vectors", help="write PyTorch's outputs for a synthetic input")
    add("--cross-validate", action="store_true", help="fit and measure fold by fold; write nothing")
    add("--measure", metavar="FEATURES", help="measure the fit on the photographs of another file")
    add("--data", default="the author's own photographs", help="source of the photographs")
    add("--folds", type=int, default=5)
    add("--only-folds", type=lambda t: [int(v) for v in t.split(",")], default=[])
    add("--share", type=float, default=1.0, help="share of the photographs to fit on")
    add("--without", type=lambda t: t.split(","), default=[],
        help="leave out, comma-separated: planes, pairs, input0 .. input13, " + ", ".join(GROUPS))
    add("--epochs", type=int, default=10)
    add("--channels", type=int, default=24)
    add("--dilations", type=lambda t: [int(v) for v in t.split(",")], default=[1])
    add("--rate", type=float, default=1e-3)
    add("--decay", type=float, default=0.05)
    add("--drop", type=float, default=0.15, help="share of channels dropped while fitting")
    add("--spread", type=float, default=0.06, help="spread of the soft targets, in overlap")
    add("--ridge", type=float, default=3e-4, help="ridge of the convex fit")
    add("--pair-weight", type=float, default=1.5)
    add("--expected", type=float, default=2.0, help="weight of the expected overlap")
    add("--average", type=float, default=0.99, help="decay of the moving average of the weights")
    add("--batch", type=int, default=12)
    add("--candidates", type=int, default=128, help="candidates drawn for each of the two lists")
    add("--seed", type=int, default=1)
    add("--threads", type=int, default=1)
    add("--sharpness", type=float, default=2.0, help="sharpness written into the model")
    add("--overlap-line", type=lambda t: [float(v) for v in t.split(",")], default=[0.0897, 0.7870],
        help="OFFSET,SLOPE as --cross-validate prints it, written into the model")
    add("--sharpnesses", type=lambda t: [float(v) for v in t.split(",")],
        default=[1.5, 2.0, 2.5, 3.0])
    args = parser.parse_args()

    torch.set_num_threads(args.threads)
    photos = read_photos(args.features)
    if args.cross_validate:
        cross_validate(photos, args)
        return
    model, scaling = fit(photos, args)
    if args.measure:
        print_table(args.measure, measure(model, scaling, read_photos(args.measure), args), args)
    document = as_document(model, scaling, args)
    if args.json:
        with open(args.json, "w", encoding="ascii") as out:
            json.dump(document, out)
            out.write("\n")
    if args.cpp:
        with open(args.cpp, "w", encoding="ascii") as out:
            out.write(as_cpp(document))
    if args.vectors:
        reference_vectors(model, scaling, args.vectors)


if __name__ == "__main__":
    main()

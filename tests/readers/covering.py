"""A table of rows in which every two values of two dimensions meet, small but not the smallest. Always the same."""
import itertools


def pairs_of(row, names):
    return {((a, row[a]), (b, row[b])) for a, b in itertools.combinations(names, 2)}


def all_pairs(dimensions):
    """In the order of the dimensions and their values."""
    return [((a, x), (b, y)) for a, b in itertools.combinations(dimensions, 2)
            for x, y in itertools.product(dimensions[a], dimensions[b])]


def covering_rows(dimensions):
    """Begins each row with a pair that is still missing, then takes for each dimension the value that adds most."""
    names = list(dimensions)
    missing = dict.fromkeys(all_pairs(dimensions))
    uses = {(name, value): 0 for name in names for value in dimensions[name]}
    while missing:
        row = dict(next(iter(missing)))
        for name in names:
            if name in row:
                continue

            def worth(value):
                met = sum(tuple(sorted(((name, value), other), key=lambda item: names.index(item[0]))) in missing
                          for other in row.items())
                return met, -uses[name, value]

            row[name] = max(dimensions[name], key=worth)
        row = {name: row[name] for name in names}
        for item in row.items():
            uses[item] += 1
        for pair in pairs_of(row, names):
            missing.pop(pair, None)
        yield row


def single_rows(dimensions, defaults):
    for name, values in dimensions.items():
        for value in values:
            yield {**defaults, name: value}

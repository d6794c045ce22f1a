"""The list of scenarios. A scenario is a function of the ring that returns its figure, and raises what went wrong."""

import itertools
import re
import string

_scenarios = []


class Scenario:
    def __init__(self, name, title, long, timed, play):
        self.name = name  # "6" or "6a", a variant of 6
        self.long = long  # whether it takes more than a minute
        self.timed = timed  # whether its figure is a time, which a busy machine would spoil
        self.number = re.match(r"\d+", name).group()
        self.title = title
        self.play = play


def scenario(name, title, long=False, timed=False):
    def register(function):
        _scenarios.append(Scenario(name, title, long, timed, function))
        return function

    return register


def scenarios():
    """The long ones first, so that the others can run beside them."""
    return sorted(_scenarios, key=lambda one: (not one.long, int(one.number), one.name))


def new_letters():
    """The letters that one stick after the other is given in a run: each once, and from D on again after Y."""
    return itertools.chain(string.ascii_uppercase[3:25], itertools.repeat("D"))


def expect(condition, complaint):
    if not condition:
        raise AssertionError(complaint)


def expect_equal(found, wanted, what):
    if found != wanted:
        raise AssertionError(f"{what}: {found!r}, not {wanted!r}")

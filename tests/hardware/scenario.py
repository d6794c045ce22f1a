"""The list of scenarios. A scenario is a function of the ring that returns its figure, and raises what went wrong."""

import re

_scenarios = []


class Scenario:
    def __init__(self, name, title, timed, play):
        self.name = name  # "6" or "6a", a variant of 6
        self.timed = timed  # whether its figure is a time, which a busy machine would spoil
        self.number = re.match(r"\d+", name).group()
        self.title = title
        self.play = play


def scenario(name, title, timed=False):
    def register(function):
        _scenarios.append(Scenario(name, title, timed, function))
        return function

    return register


def scenarios():
    """The timed ones last: what else ran on the machine at first may have ended by then."""
    return sorted(_scenarios, key=lambda one: (one.timed, int(one.number), one.name))


def expect(condition, complaint):
    if not condition:
        raise AssertionError(complaint)


def expect_equal(found, wanted, what):
    if found != wanted:
        raise AssertionError(f"{what}: {found!r}, not {wanted!r}")

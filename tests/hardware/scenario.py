"""The list of scenarios. A scenario is a function of the ring that returns its figure, and raises what went wrong."""

import re

_scenarios = []


class Scenario:
    def __init__(self, name, title, play):
        self.name = name  # "6" or "6a", a variant of 6
        self.number = re.match(r"\d+", name).group()
        self.title = title
        self.play = play


def scenario(name, title):
    def register(function):
        _scenarios.append(Scenario(name, title, function))
        return function

    return register


def scenarios():
    return sorted(_scenarios, key=lambda one: (int(one.number), one.name))


def expect(condition, complaint):
    if not condition:
        raise AssertionError(complaint)


def expect_equal(found, wanted, what):
    if found != wanted:
        raise AssertionError(f"{what}: {found!r}, not {wanted!r}")

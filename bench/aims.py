"""What benchmarks aim at: the words beside a figure, and the end of a run that missed one."""
import sys

missed = []


def _told(name, words, is_met):
    if not is_met:
        missed.append(name)
    return f", aim {words}{'' if is_met else ' MISSED'}"


def at_least(name, figure, aim, words=None):
    return _told(name, words or f"{aim:g}", figure >= aim)


def at_most(name, figure, aim, words=None):
    return _told(name, words or f"at most {aim:g}", figure <= aim)


def end():
    """Exits with 1, and names them, where any was missed."""
    if missed:
        sys.exit(f"missed: {'; '.join(missed)}")

"""Documentation of what is written by hand: its own words, then the manual of the family."""
from vekcv import _manual


def documented(export):
    """Adds the manual of an export's family to the documentation of a function or a class."""
    _, family, _ = _manual.EXPORTS[export]
    text, parameters, _ = _manual.FAMILIES[family]

    def add(target):
        lines = [f"    {name}: {description}" for name, description in parameters.items() if not name.endswith("Step")]
        target.__doc__ = "\n".join([target.__doc__, "", text, "", "Parameters in C:", *lines])
        return target
    return add

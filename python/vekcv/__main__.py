"""python3 -m vekcv: what there is, from the command line."""
import argparse
import fnmatch

import vekcv
from vekcv import _manual


def info(_):
    """Version, variant and threads."""
    version = vekcv.version()
    print(f"version   {version.number} of {version.date}")
    print(f"variant   {version.name}")
    print(f"threads   {vekcv.get_num_threads()}")


def listing(arguments):
    """The functions of the C interface, what they are in Python, and what they do."""
    found = [(name, python, brief) for name, (python, _, brief) in _manual.EXPORTS.items()
             if any(fnmatch.fnmatch(each, arguments.pattern) for each in (name, python))]
    widths = [max((len(row[column]) for row in found), default=0) for column in (0, 1)]
    for name, python, brief in found:
        print(f"{name:{widths[0]}}  {python:{widths[1]}}  {brief}")


def main():
    parser = argparse.ArgumentParser(prog="python3 -m vekcv", description=vekcv.__doc__.split("\n")[0])
    commands = parser.add_subparsers(required=True, metavar="info|list")
    commands.add_parser("info", help=info.__doc__).set_defaults(run=info)
    command = commands.add_parser("list", help=listing.__doc__)
    command.add_argument("pattern", nargs="?", default="*", help="names in C or in Python, such as '*sobel*'")
    command.set_defaults(run=listing)
    arguments = parser.parse_args()
    arguments.run(arguments)


if __name__ == "__main__":
    main()

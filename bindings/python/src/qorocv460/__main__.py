"""python -m qorocv460: what is there to do with the package from a command line."""

from __future__ import annotations

import argparse
import sys
from typing import List, Optional

from . import ModelsError, version
from ._models import fetch


def main(arguments: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(prog="python -m qorocv460", description="QOROCV460 for Python")
    parser.add_argument("--version", action="version", version=version())
    commands = parser.add_subparsers(dest="command", required=True)
    models = commands.add_parser(
        "models", help="fetch the published models", description="Fetches the published models, and checks them."
    )
    models.add_argument("directory", metavar="DIR", help="where to put them; made where it is missing")
    options = parser.parse_args(arguments)
    try:
        fetch(options.directory, say=print)
    except (ModelsError, OSError) as error:
        print(f"qorocv460: {error}", file=sys.stderr)
        return 1
    print(f"{options.directory} holds the published models")
    return 0


if __name__ == "__main__":
    sys.exit(main())

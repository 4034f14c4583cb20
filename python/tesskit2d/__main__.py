"""``python3 -m tesskit2d``: the command line (see ``tesskit2d --help``)."""
import sys

from .cli import main

sys.exit(main())

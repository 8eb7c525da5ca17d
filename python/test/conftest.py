"""What all tests of the package begin with."""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "generate"))


def pytest_configure(config):
    config.addinivalue_line("filterwarnings", "error")
    # Of Debian's dask, distributed and what they stand on.
    for module in ("distributed", "dask", "tornado", "zarr", "numcodecs", "jupyter_client", "nbconvert", "imageio"):
        config.addinivalue_line("filterwarnings", f"default:::{module}")
    config.addinivalue_line("filterwarnings", "default:make_current is deprecated:DeprecationWarning")

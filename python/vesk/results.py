"""Results of a run as arrays over times and segments."""

from __future__ import annotations

import difflib
from collections import Counter
from typing import TYPE_CHECKING

from . import html
from .table import PathLike

if TYPE_CHECKING:
    import xarray


class Results:
    """A NetCDF results file. Values are read on demand, unless `load` is set."""

    def __init__(self, file: PathLike, load: bool = False) -> None:
        try:
            import xarray
        except ImportError:
            raise ImportError("Results as arrays require xarray and netCDF4: apt install python3-xarray "
                              "python3-netcdf4, or pip install xarray netCDF4.") from None
        opened = xarray.open_dataset(file)
        names = [name.decode("utf-8", "replace") if isinstance(name, bytes) else str(name)
                 for name in opened["segment_name"].values]
        count = Counter(names)  # duplicate names get the segment's number, as in the engine's tables
        labels = [name if count[name] == 1 and name else f"{name} [{at + 1}]" for at, name in enumerate(names)]
        self.dataset: xarray.Dataset = opened.drop_vars("segment_name").assign_coords(
            position=("segment", opened["segment"].values), segment=labels)
        if load:
            self.dataset.load()
            opened.close()

    @property
    def variables(self) -> dict[str, str]:
        """The names in the file, with description and units."""
        return {str(name): f"{it.attrs.get('long_name', name)}, {it.attrs.get('units', '1')}"
                for name, it in self.dataset.data_vars.items() if it.dims == ("time", "segment")}

    def by_name(self, variable: str) -> xarray.DataArray:
        """A variable over `time` and `segment`, found by its name in the file or its long name; its units are in
        `attrs`. Segments are selected by name: `.sel(segment="km 60 Oak City")`."""
        long_names = {str(self.dataset[name].attrs.get("long_name", name)): name for name in self.variables}
        name = variable if variable in self.variables else long_names.get(variable)
        if name is None:
            near = difflib.get_close_matches(variable, [*self.variables, *long_names], 1, 0)
            raise ValueError(f"There is no variable \"{variable}\"; the nearest is \"{near[0]}\".")
        return self.dataset[name]

    def __getitem__(self, variable: str) -> xarray.DataArray:
        return self.by_name(variable)

    def _repr_html_(self) -> str:
        size = self.dataset.sizes
        return html.table(self.variables.items(), ("variable", "content"),
                          f"{size['time']} times, {size['segment']} segments")

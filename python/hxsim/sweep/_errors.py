"""The error of hxsweep's operations: a message for the user and the exit status it means."""


class SweepError(Exception):
    """A sweep file, a sweep's folder or a backend that does not serve. `status` is hxsweep's exit status:
    2 the sweep file, 3 a file or folder, 4 Dask or Slurm, 5 interrupted."""

    def __init__(self, message, status=3):
        super().__init__(message)
        self.status = status

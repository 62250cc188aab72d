#!/usr/bin/env python3
"""Samples of three constants of the sample river, run with Dask on a cluster of two workers on this machine.

    dask_cluster/run.py [FOLDER] [ROWS]      default: build/many_runs/dask_cluster and 200

On a real cluster replace LocalCluster with its class, such as dask_jobqueue.SLURMCluster; nothing else changes.
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import sample_river  # noqa: E402  also finds the package and the programs
import vesk  # noqa: E402


def main(folder, count):
    from distributed import Client, LocalCluster

    river = sample_river.prepare(folder)
    table = vesk.parameters(sample_river.HERE / "parameters.csv")
    sample = vesk.sample(table, count, seed=1, file=folder / "sample.csv")
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster) as client:
        runs = vesk.run_many(vesk.rows(river, table, sample), executor=client, output_dir=folder / "out",
                             results="DO@25", queries=False, resume=True)
        for run in runs:
            print(f"row {run.row}: {'resumed' if run.resumed else 'done' if run.ok else run.error}", flush=True)
    print(f"{len(runs) - len(runs.failed)} of {len(runs)} rows are good.")
    return 1 if runs.failed else 0


if __name__ == "__main__":  # workers import this file, too
    FOLDER = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else sample_river.OUT / "dask_cluster")
    FOLDER.mkdir(parents=True, exist_ok=True)
    sys.exit(main(FOLDER.absolute(), int(sys.argv[2]) if len(sys.argv) > 2 else 200))

"""The operations on dask arrays: on images that are larger than memory, or spread over the processes of a cluster.

    import dask.array
    import vekcv.dask

    image = dask.array.from_zarr("image.zarr")
    edges = vekcv.dask.filter_sobel_vert(image, aperture=5)
    mean, deviation = vekcv.dask.mean_std_dev(edges).compute()

Names and arguments are those of vekcv, without `out`. What gives an image there gives a dask array here, and what gives
numbers a delayed value, which computes to them. Everything is lazy, and the same to the last bit as one call on the
whole image: filters read the pixels of the blocks around, and border rules apply at the edge of the whole image only.
Only sums of floats differ, which are added in another order.

Chunks of 2000 x 2000 to 4000 x 4000 pixels serve well, and those that span all columns best. Chunks smaller than what a
filter reads around a pixel are joined.

Where dask has several threads, each call needs one thread of the library only: vekcv.set_num_threads(1) in this
process, and one_thread_per_worker(client) in those of a cluster.
"""
from vekcv.dask.integrals import integral, sqr_integral
from vekcv.dask.operations import *
from vekcv.dask.reductions import mean, mean_std_dev, min_max_indx, moments, norm, norm_diff, norm_rel
from vekcv.raw import lib


def one_thread_per_worker(client):
    """Gives the library one thread in each worker of a distributed.Client, also in workers that start later."""
    client.register_worker_callbacks(_one_thread)


def _one_thread():
    lib.vekSetNumThreads(1)

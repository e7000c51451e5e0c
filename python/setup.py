from setuptools import setup

setup(cffi_modules=["binding.py:binding"])

#!/bin/sh
# Stands where a component has its program for macOS.
echo "$(basename "$0"): runs on macOS only" >&2
exit 69

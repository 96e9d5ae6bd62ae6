#!/bin/sh
# build.sh COMPILER FOLDER: builds the program without any build system, as the README says.
set -e
cd "$(dirname "$0")"
# shellcheck disable=SC2046
"$1" -std=c++20 ../main.cpp $(pkg-config --cflags --libs zantrel) -o "$2/consumer"

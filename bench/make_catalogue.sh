#!/usr/bin/env bash
# Writes the catalogue the tool's benchmark rows run on: DIR/toolbar.reg, a
# Toolbar key of 10,000 products with eleven values each and part numbers in
# a shuffled order (the products of bench/catalogue_bench.cpp), and
# DIR/part-numbers.txt, the table that knows all of them.
# Usage: bench/make_catalogue.sh DIR
set -euo pipefail
dir="$1"
awk -v reg="$dir/toolbar.reg" -v table="$dir/part-numbers.txt" 'BEGIN {
    srand(42)
    n = 10000
    for (i = 1; i <= n; i++) number[i] = i
    for (i = n; i > 1; i--) { j = int(rand() * i) + 1; t = number[i]; number[i] = number[j]; number[j] = t }
    printf "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n\"InstallDir\"=\"C:\\\\QUORL\"\r\n\r\n" > reg
    printf "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar]\r\n\r\n" > reg
    for (i = 0; i < n; i++) {
        part = "QRL-" number[i + 1]
        print part > table
        printf "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product %d]\r\n", i > reg
        printf "\"DisplayName\"=\"Quorl Product %d\"\r\n", i > reg
        printf "\"ApplicationPath\"=\"C:\\\\Program Files\\\\QUORL\\\\Product %d\"\r\n", i > reg
        printf "\"PartNumber\"=\"%s\"\r\n", part > reg
        printf "\"VersionMajor\"=dword:%08x\r\n\"VersionMinor\"=dword:%08x\r\n", i % 20, i % 100 > reg
        printf "\"VersionRevisionMajor\"=dword:%08x\r\n\"VersionRevisionMinor\"=dword:%08x\r\n", i % 7, i % 31 > reg
        printf "\"Label\"=\"Product %d\"\r\n\"IconFile\"=\"product.ico\"\r\n", i > reg
        printf "\"Revision\"=\"R%d\"\r\n\"Tooltip\"=\"Starts product %d\"\r\n\r\n", i % 5, i > reg
    }
}'

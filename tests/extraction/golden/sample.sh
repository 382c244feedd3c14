#!/usr/bin/env bash
source ./lib.sh
LIMIT=3
name=x

# Builds it.
build() {
  local inner=1
  compile "$inner" | tee log
}

function clean {
  rm -f "$name"
}

build

// Copyright 2020

// Package foo does.
package foo

import (
	"fmt"
	alias "a/b"
)

// Max is.
const Max = 1

const (
	// A doc
	A = iota
	b // trailing
)

var X, y = 1, 2

// T is a thing.
type T[K any] struct {
	// Name doc
	Name string `json:"x"`
	a, B int
	fmt.Stringer
	*Base
}

type (
	// I doc.
	I interface {
		Base
		// Do it.
		Do(x int) error
	}
	F func(int) string
)

// Get gets.
//
// More.
//
//go:noinline
func (t *T[K]) Get(
	a int,
	b ...string,
) (err error) {
	v := 1
	fmt.Println(a)
	for i := range table[row][v] {
		table[row][v][i] = a
	}
	return t.other(func() {})
}
func gen[T any](x T) {}

func inline(point struct {
	X, Y int
	tag string
}, rest ...int,
) {
}

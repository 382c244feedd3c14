/* Copyright (C) the authors. */
#include <stdio.h>
#include "own.h"

#define LIMIT 10 /* most of them */
#define TWICE(x) ((x) + (x))

/* A point. */
typedef struct {
  int x; /* across */
  int y, *z;
  int (*call)(void *);
} Point;

struct node {
  struct node *next;
};

typedef struct node Node;
typedef int (*handler)(int);
enum color { RED, GREEN = 2 };

static int prototype(int);

static const char *names[] = {"a", "b"};
int counter = 0;

int broken(int a { return a; }

/*
 * Adds.
 */
static int add(int a,
               int b)
{
  int local = a;
  return TWICE(local) + b;
}

Point *make(void)
{
  struct node n;
  n.next->run(1);
  return malloc(sizeof(Point));
}

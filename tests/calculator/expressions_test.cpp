#include <gtest/gtest.h>

#include "tests/calculator/calculator_world.h"

namespace {

constexpr const char* kDeclarations =
    "a, b, c, d : single int; p, q, r, s : bool; u[0..3] : single int; v[-1..1] : bool;"
    "x, y : real; w : int; let n = 3, C = [[4, 7], [1, 9]], I = 0..1; m[I, 1..n] : single int;";

struct Row {
  std::string source, statements;
};

void Check(const std::vector<Row>& rows) {
  for (const auto& [source, statements] : rows) {
    SCOPED_TRACE(source);
    const Reading reading = ReadModel(kDeclarations + source);
    ASSERT_EQ(reading.ErrorText(), "");
    EXPECT_EQ(reading.StatementText(), statements);
  }
}

TEST(ExpressionsTest, OperatorsBindInTheStatedOrder) {
  Check({
      {"a = -b^2;",                     "a = (-(b ^ 2)); "                     },
      {"a = 2^b^c;",                    "a = (2 ^ (b ^ c)); "                  },
      {"a = 2^-b^c;",                   "a = (2 ^ (-(b ^ c))); "               },
      {"a = b - c - d;",                "a = ((b - c) - d); "                  },
      {"a = b / c * d mod b;",          "a = (((b / c) * d) mod b); "          },
      {"a = b + c * -d;",               "a = (b + (c * (-d))); "               },
      {"a = b /\\ c + d \\/ a;",        "a = ((b /\\ (c + d)) \\/ a); "        },
      {"p || q && r -> s -> p;",        "((p || (q && r)) -> (s -> p)); "      },
      {"~p && (q == r);",               "(~p); (q == r); "                     },
      {"~p == q;",                      "((~p) == q); "                        },
      {"a + 1 << b * 2 || a >== c;",    "(((a + 1) << (b * 2)) || (a >== c)); "},
      {"~(p || q);",                    "(~(p || q)); "                        },
      {"a<-b; a<>-b; p->~q;",           "a < (-b); a <> (-b); (p -> (~q)); "   },
      {"a << b; p <<>> (c <== d);",     "(a << b); (p <<>> (c <== d)); "       },
      {"x = (real) a + sqrt(y);",       "x = (((real)a) + sqrt(y)); "          },
      {"x = (real) a^2;",               "x = ((real)(a ^ 2)); "                },
      {"x = real(a) * Pi;",             "x = (((real)a) * Pi); "               },
      {"(a) = ((b));",                  "a = b; "                              },
      {"(a < b) + 1 = c;",              "((a < b) + 1) = c; "                  },
      {"abs(next(a)) = sign(prev(b));", "abs(next(a)) = sign(prev(b)); "       },
      {"PrimeNumber(w); p;",            "PrimeNumber(w); p; "                  },
      {"/* a */ a // b\n = /**/ b;;",   "a = b; "                              },
  });
}

TEST(ExpressionsTest, LoopsAndAggregatesAreWrittenOut) {
  Check({
      {"for i in 0..n-1 : u[i] = u[i+1];",                                             "u[0] = u[1]; u[1] = u[2]; u[2] = u[3]; "             },
      {"for i in 0..2, j in i+1..3 where (i + j) mod 2 = 1 && i <> 1 : u[i] <> u[j];",
       "u[0] <> u[1]; u[0] <> u[3]; u[2] <> u[3]; "                                                                                          },
      {"for i in 1..2 : { a <> i; for j in i..2 : u[i] < u[j]; }",
       "a <> 1; u[1] < u[1]; u[1] < u[2]; a <> 2; u[2] < u[2]; "                                                                             },
      {"for i in 5..n : a = i;",                                                       ""                                                    },
      {"for i in 1..2 : forall(j in i..2) u[i] >= j * i;",                             "u[1] >= 1; u[1] >= 2; u[2] >= 4; "                   },
      {"a = sum(i in 1..3) i * u[i] + 1;",                                             "a = ((((1 * u[1]) + (2 * u[2])) + (3 * u[3])) + 1); "},
      {"a = sum(i in 0..3) (u[i] + i);",
       "a = (((u[0] + 0) + (u[1] + 1)) + ((u[2] + 2) + (u[3] + 3))); "                                                                       },
      {"a = product(i in 1..2 where i > 1) u[i]; b = product(u);",
       "a = u[2]; b = ((u[0] * u[1]) * (u[2] * u[3])); "                                                                                     },
      {"a = min(i in 0..1) u[i]; b = max(a, c, d);",
       "a = (u[0] /\\ u[1]); b = ((a \\/ c) \\/ d); "                                                                                        },
      {"a = b + sum(i in 1..0) u[i]; c = product(i in 1..0) u[i];",                    "a = (b + 0); c = 1; "                                },
      {"p -> forall(i in -1..1) v[i]; forall(v, a < b); exists(v);",
       "(p -> ((v[-1] && v[0]) && v[1])); v[-1]; v[0]; v[1]; a < b; ((v[-1] || v[0]) || v[1]); "                                             },
      {"forall(i in 1..0) v[i]; ~exists(i in 1..0) v[i];",                             ""                                                    },
      {"alldifferent(i in 0..2) (u[i] + i);",                                          "alldifferent((u[0] + 0), (u[1] + 1), (u[2] + 2)); "  },
      {"p == alldifferent(a, b, c);",                                                  "(p == (((a <<>> b) && (a <<>> c)) && (b <<>> c))); " },
      {"alldifferent(1, 2, a); alldifferent(a, b); alldifferent(1, 2, 3);",
       "alldifferent(1, 2, a); a <> b; "                                                                                                     },
      {"alldifferent(a, b, w); alldifferent(x, a, y);",
       "a <> b; a <> w; b <> w; x <> a; x <> y; a <> y; "                                                                                    },
      {"sum(p, a << b) = 1; sum(v) + int(p) = 2 * (int) p;",
       "count(p, (a << b)) = [1,1]; (count(v[-1], v[0], v[1]) + count(p)) = ([2,2] * count(p)); "                                            },
      {"w = sum(i in 1..n) (i == 2) + int(n >> 5);",                                   "w = [1,1]; "                                         },
  });
}

TEST(ExpressionsTest, ListsAreIndexedAndSliced) {
  Check({
      {"a = C[2, 1] * m[1, n];",                                           "a = (1 * m[1,3]); "                      },
      {"a = sum(m[.., 2]); a = max(m[0, 2..3]);",
       "a = (m[0,2] + m[1,2]); a = (m[0,2] \\/ m[0,3]); "                                                            },
      {"a = sum(C[.., 2]) + sum(C) + min(I);",                             "a = 37; "                                },
      {"for i in I where i > 0 : alldifferent(m[i, ..]);",
       "alldifferent(m[1,1], m[1,2], m[1,3]); "                                                                      },
      {"a = sum(i in I) C[i + 1, 2] * u[i];",                              "a = ((7 * u[0]) + (9 * u[1])); "         },
      {"sum(i in 1..2) [a, b] = 4; max([b, [c]]) = 0;",                    "((a + b) + (a + b)) = 4; (b \\/ c) = 0; "},
      {"let k = [1..2, 5..6], h = C[2, ..]; a = sum(i in k[2]) i + h[2];", "a = 20; "                                },
      {"for i in 5..4 : a = C[i, i]; sum([]) = a;",                        "0 = a; "                                 },
  });
}

TEST(ExpressionsTest, ConditionsSetsAndChains) {
  Check({
      {"a < b <= c = d; p == (a << b <== c);",
       "a < b; b <= c; c = d; (p == ((a << b) && (b <== c))); "                                                               },
      {"p <-> q xor r; p xor q -> r;",                                       "(p == (q <<>> r)); ((p <<>> q) -> r); "         },
      {"a in {1, 3..5, 4, 7}; a in 2..9;",                                   "in(a; 1 1 3 5 7 7); a >= 2; a <= 9; "           },
      {"p == (a in {1, 3..5});",                                             "(p == ((a == 1) || ((a >== 3) && (a <== 5)))); "},
      {"z[1..2] : single int in {1, 3};",                                    "in(z[1]; 1 1 3 3); in(z[2]; 1 1 3 3); "         },
      {"a in {0, 100};",                                                     "in(a; 0 0 100 100); "                           },
      {"for i in {1, 5..6} where i in 2..9 : a > i;",                        "a > 5; a > 6; "                                 },
      {"a = if n > 2 then 1 / (n - 3 + 1) else 1 / (n - 3);",                "a = 1; "                                        },
      {"let k = abs(-2); a = sum(i in k..3) i;",                             "a = 5; "                                        },
      {"if -n < 0 then a = 1;",                                              "a = 1; "                                        },
      {"a = if a > b then 5 else 2;",                                        "a = ([2,2] + (count((a >> b)) * [3,3])); "      },
      {"p = if q then r else s;",                                            "p = ((q -> r) && ((~q) -> s)); "                },
      {"if n = 3 then { a = 1; b = 2; } else a = 7;",                        "a = 1; b = 2; "                                 },
      {"if p then a = 1 else if q then a < b < c; if n > 3 then a = 0;",
       "(p -> (a == 1)); (((~p) && q) -> ((a << b) && (b << c))); "                                                           },
      {"if a > 3 then for i in 1..2 : { u[i] = 1; } b = 2;",
       "((a >> 3) -> (u[1] == 1)); ((a >> 3) -> (u[2] == 1)); b = 2; "                                                        },
      {"a = 2 * count(i in 0..3) (u[i] == i); assert(n in {3}, \"three\");",
       "a = ([2,2] * count((u[0] == 0), (u[1] == 1), (u[2] == 2), (u[3] == 3))); "                                            },
  });
  const Reading names =
      ReadModel("if, then : bool; count, xor, assert : int; if -> then; xor = count * assert;");
  EXPECT_EQ(names.ErrorText(), "") << "words of some places are names in all others";
}

TEST(ExpressionsTest, FunctionsMeanTheSameWhereverTheyAreUsed) {
  Check({
      {"let sq(a) = a * a; b = sq(a + c) + sq(2);",                                             "b = (((a + c) * (a + c)) + 4); "                    },
      {"let far(x, y) = abs(x - y) >= n && x < 9; far(a, b);",                                  "abs((a - b)) >= 3; a < 9; "                         },
      {"let far(x, y) = abs(x - y) >= n; if p then far(a, b);",                                 "(p -> (abs((a - b)) >== 3)); "                      },
      {"let f(i) = i + a, g(j, a) = f(j) * a + sum(i in I) u[i]; for i in 1..1 : b = g(i, c);",
       "b = (((1 + a) * c) + (u[0] + u[1])); "                                                                                                       },
      {"let last(l) = l[size(l)]; a = last(m[0, ..]) + last([1, 7]);",                          "a = (m[0,3] + 7); "                                 },
      {"let S = intersection(union(1..3, {7, 9}), 3..8); a = size(S) + max(S);",                "a = 9; "                                            },
      {"symmetric(u);",                                                                         "(u[0] <== u[1]); (u[1] <== u[2]); (u[2] <== u[3]); "},
      {"symmetric(C[1, ..], [a, b]);",                                                          "((4 << a) || ((4 == a) && (7 <== b))); "            },
  });
}

TEST(ExpressionsTest, ConstantsFold) {
  Check({
      {"a = b + 2*3 - 1; a = 2 + 3 + b;",                       "a = ((b + 6) - 1); a = (5 + b); "    },
      {"a = b + (-7) mod 3; a = b + 6/3 + 2^10;",               "a = (b + -1); a = ((b + 2) + 1024); "},
      {"a = b + (3 /\\ 2) + (3 \\/ 2);",                        "a = ((b + 2) + 3); "                 },
      {"let k = n * n, t = k > 8 && ~(k == 8); t -> p; a = k;", "(True -> p); a = 9; "                },
      {"let h = 1/4; x = h * 8; x = y^(1/2);",                  "x = 2.0; x = (y ^ 0.5); "            },
      {"2 < 3; 1 + 1 = 2; True; n == 3; n < 3;",                "[3,3] < [3,3]; "                     },
      {"let e = sqrt(2) * Pi; x = e; y = e * 2;",
       "x = (sqrt([2,2]) * Pi); y = ((sqrt([2,2]) * Pi) * 2.0); "                                     },
  });
}

}  // namespace

// The widths that domains inherit.

#include "tests/solver/world.h"

TEST(ValueOperationsTest, Widths) {
  struct Row {
    const char *type, *text;
    double width, relative;  // at scale 2
  } rows[] = {
      {"interval int",  "1,3",  2, 2.0 / 3},
      {"interval int",  "5",    0, 0      },
      {"interval int",  "Nil",  0, 0      },
      {"interval real", "-8,0", 8, 1      },
      {"interval real", "0,1",  1, 0.5    },
      {"single real",   "7",    0, 0      },
      {"single bool",   "Any",  1, 0.5    },
      {"single bool",   "1",    0, 0      },
      {"single bool",   "Nil",  0, 0      },
  };
  World world;
  for (const Row& row : rows) {
    const ZULTaVoAny* value = world.Add(row.type, row.text);
    EXPECT_EQ(value->GetWidth(), row.width) << row.type << ' ' << row.text;
    EXPECT_EQ(value->GetRelativeWidth(2), row.relative) << row.type << ' ' << row.text;
  }
}

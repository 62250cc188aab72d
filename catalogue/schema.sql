-- The catalogue: what each model consists of. Read-only for the programs; this text is its only source.
-- A row's ISC number is the item's name between data set and engine and never changes once published.

CREATE TABLE models (
  Model_id         INTEGER PRIMARY KEY,
  Model_name       TEXT NOT NULL CHECK (length(Model_name) <= 80),
  Library          TEXT NOT NULL CHECK (length(Library) <= 80),
  Model_stack_size INTEGER NOT NULL DEFAULT 0,
  Sort_key         INTEGER NOT NULL
);
CREATE INDEX Sort_key_index ON models (Sort_key);

CREATE TABLE solution (
  ID       INTEGER PRIMARY KEY,
  Solution TEXT NOT NULL CHECK (length(Solution) <= 30)
);

CREATE TABLE Parameters (
  Parameter_id INTEGER PRIMARY KEY,
  Model_id     INTEGER NOT NULL REFERENCES models (Model_id),
  ISC_number   INTEGER NOT NULL CHECK (ISC_number > 0),
  Minimum      REAL NOT NULL,
  Maximum      REAL NOT NULL,
  "Default"    REAL NOT NULL CHECK ("Default" BETWEEN Minimum AND Maximum),
  Description  TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key     INTEGER NOT NULL,
  UNIQUE (Model_id, ISC_number)
);

-- Model_system_id is the system's number in the engine's counting: 1, 2, 3, ... in Sort_key order.
CREATE TABLE Systems (
  System_id       INTEGER PRIMARY KEY,
  Model_system_id INTEGER NOT NULL CHECK (Model_system_id > 0),
  Model_id        INTEGER NOT NULL REFERENCES models (Model_id),
  Description     TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key        INTEGER NOT NULL,
  UNIQUE (Model_id, Model_system_id)
);

CREATE TABLE Constants_groups (
  Group_id    INTEGER PRIMARY KEY,
  Model_id    INTEGER NOT NULL REFERENCES models (Model_id),
  Description TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key    INTEGER NOT NULL
);

CREATE TABLE Constants (
  Constant_id INTEGER PRIMARY KEY,
  Group_id    INTEGER NOT NULL REFERENCES Constants_groups (Group_id),
  ISC_number  INTEGER NOT NULL CHECK (ISC_number > 0),
  Minimum     REAL NOT NULL,
  Maximum     REAL NOT NULL,
  "Default"   REAL NOT NULL CHECK ("Default" BETWEEN Minimum AND Maximum),
  Description TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key    INTEGER NOT NULL
);

CREATE TABLE Time_functions (
  Time_function_id INTEGER PRIMARY KEY,
  Model_id         INTEGER NOT NULL REFERENCES models (Model_id),
  ISC_number       INTEGER NOT NULL CHECK (ISC_number > 0),
  Description      TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key         INTEGER NOT NULL,
  UNIQUE (Model_id, ISC_number)
);

CREATE TABLE segment_types (
  Model_id             INTEGER NOT NULL REFERENCES models (Model_id),
  Vesk_segment_type_id INTEGER NOT NULL,
  Description          TEXT NOT NULL CHECK (length(Description) <= 80),
  Sort_key             INTEGER NOT NULL,
  UNIQUE (Model_id, Vesk_segment_type_id)
);

CREATE TABLE output_control (
  Model_Id     INTEGER NOT NULL REFERENCES models (Model_id),
  ISC_number   INTEGER NOT NULL CHECK (ISC_number > 0),
  Description  TEXT NOT NULL CHECK (length(Description) <= 40),
  Units        TEXT NOT NULL CHECK (length(Units) <= 15),
  Short_Desc   TEXT NOT NULL CHECK (length(Short_Desc) <= 15),
  Sort_key     INTEGER NOT NULL,
  Csv_filename TEXT NOT NULL CHECK (length(Csv_filename) <= 255),
  UNIQUE (Model_Id, ISC_number),
  UNIQUE (Model_Id, Short_Desc),
  UNIQUE (Model_Id, Csv_filename)
);

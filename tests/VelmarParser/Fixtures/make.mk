CC := clang
FLAGS ?= -O2 -Wall
SOURCES = $(wildcard src/*.c)
OBJECTS = $(SOURCES:.c=.o)

ifeq ($(DEBUG),1)
FLAGS += -g
endif

.PHONY: all clean

all: program

program: $(OBJECTS)
	$(CC) $(FLAGS) -o $@ $^

%.o: %.c
	@echo compiling $<
	$(CC) $(FLAGS) -c $< -o $@

clean:
	rm -f $(OBJECTS) program

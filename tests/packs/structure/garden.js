#!/usr/bin/env node
import {
  bed,
  path,
} from "./garden.js";

const size = 3;
let open = false, name;
export const area = ({ width, height }, scale = 1, ...rest) => {
  return width * height;
};

// ! Classes

/**
 * A bed.
 */
export default class Bed extends Place {
  static count = 0;
  #plants = [];
  onRain = (drops) => {
    this.#plants.push(drops);
  };
  constructor(width) { super(width); }
  get plants() { return this.#plants; }
  set plants(list) { this.#plants = list; }
  static async of(...beds) {
    for (const one of beds) {
      await one;
    }
    if (size) {
      return 1;
    } else {
      return 2;
    }
  }
  get(key) {}
  [Symbol.iterator]() {}
}

function* walk(beds, step = (x) => x) {
  const visit = (one) => one;
  function inner() {}
  switch (step) {
  case 1:
    yield visit;
    break;
  default:
    yield beds;
    inner();
  }
}

const Named = class {};
module.exports.water = function (days) {};
const tools = {
  rake() {},
  dig: async (deep) => deep,
  count: 2,
};

describe("a bed", () => {
  it("grows", function () {
    expect(
      1,
      2,
    );
  });
});
view = (
  <Plot>
    <Bed
      wide
    />
  </Plot>
);

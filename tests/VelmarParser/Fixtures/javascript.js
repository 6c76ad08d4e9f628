import { readFile } from "node:fs/promises";

/** A queue whose tasks run one after the other. */
export class Queue {
  #tasks = [];
  static limit = 10;

  async add(task, { priority = 0, ...rest } = {}) {
    this.#tasks.push({ task, priority, ...rest });
    for (const { task: next } of this.#tasks) await next?.();
    return this;
  }

  get length() {
    return this.#tasks.length;
  }
}

const pattern = /^[a-z]+\/(?<id>\d+)$/gi;
const label = (n) => (n > 1 ? `${n} tasks` : "one task");

function* count(to) {
  for (let i = 0; i < to; i++) yield i;
}

try {
  const text = await readFile("tasks.txt", "utf8");
  console.log(text.match(pattern) ?? label(3), [...count(2)]);
} catch ({ message }) {
  throw new Error(message);
}

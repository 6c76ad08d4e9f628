import type { Plant } from "./plants";

export interface Bed<T extends Plant = Plant> {
  readonly name: string;
  plants: T[];
  water?(litres: number): Promise<void>;
}

type Names = { [K in keyof Bed as `get${Capitalize<K>}`]?: () => Bed[K] };

export abstract class Garden implements Iterable<Bed> {
  private static count = 0;

  constructor(protected readonly beds: Bed[] = []) {
    Garden.count++;
  }

  abstract open(): boolean;

  *[Symbol.iterator](): Iterator<Bed> {
    yield* this.beds;
  }
}

declare module "weather" {
  export function rain(day: Date): number | undefined;
}

enum Month {
  May = 5,
  June,
}

const first = <T,>(list: readonly T[]): T | null => list[0] ?? null;
const month = Month.June satisfies number as unknown;

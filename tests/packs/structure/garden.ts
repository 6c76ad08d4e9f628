declare module "plants" {
  export function find(id: bigint): string;
  const version: string;
}

export namespace Garden.Plan {
  export enum Season { spring, summer = "s" }
  export type Key<T> = { [K in keyof T]: string };
}

export interface Plant<T = string> extends Thing {
  name: T;
  grow(days: number, rain?: boolean): void;
  readonly on: (event: Event) => void;
}

export abstract class Bed<T extends Plant> implements Place {
  private static readonly kinds = new Map<
    string,
    number
  >();
  protected plants?: T[];
  handler = (event: Event): void => {};
  constructor(private readonly width: number, label?: string) {}
  abstract area(scale: number): number;
  public static of<T>(this: void, ...beds: T[]): T { return beds[0]; }
  get size(): number { return 0; }
}

function isPlant(value: unknown, { deep }: Options = {}): value is Plant {
  // FIXME: too simple
  return true;
}
const season: Season = Season.spring;
